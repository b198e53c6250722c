" Sorvel input files
au BufRead,BufNewFile *.sor setfiletype sorvel
