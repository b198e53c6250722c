" Vim syntax file
" Language:    Sorvel (score generator input, *.sor)
" Maintainer:  The Sorvel developers
" License:     MIT
"
" The same categories as the TextMate grammar of editors/vscode, whose word
" lists these keyword lists repeat (the test suite checks that they agree).
" Install: copy syntax/ and ftdetect/ into ~/.vim (or ~/.config/nvim).

if exists("b:current_syntax")
  finish
endif

let s:cpo_save = &cpo
set cpo&vim

" --- Words of the language, in either case ---------------------------------
syn case ignore
syn keyword sorvelCommand    te rs sr rd dv pf
syn keyword sorvelDdf        ra rw mo se ms ho ex s2
syn keyword sorvelInputType  re re0 re1 re2 re3 re4 re5 re6 re7 in rh db no nox op opx
syn keyword sorvelOutputType contained re re0 re1 re2 re3 re4 re5 re6 re7 in db hz op od tr
syn keyword sorvelOutputType contained bn bn0 bn1 bn2 bn3 bn4 bn5 bn6 bn7 xx
syn case match

" --- Values ------------------------------------------------------------------
syn match  sorvelNumber      "\%([[:alnum:]_$~@]\)\@<![-+]\=\%(\d\+\.\=\d*\|\.\d\+\)"
" Rhythm codes after "rh", pitch names after "no" or "nox" on the same line.
syn match  sorvelRhythm      "\%(\<rh\>.*\)\@<=\%([[:alnum:]_$~.]\)\@<!-\=\d\+\.*\%(\s*,\s*-\=\d\+\.*\)*"
syn match  sorvelPitch       "\%(\<nox\=\>.*\)\@<=\<[a-gA-G][sfn+-]*\d\=\>"
syn match  sorvelPitch       "\%(\<nox\=\>.*\)\@<=\<[rR]\>"
syn match  sorvelDuration    "(\s*\zsT\%(\*\s*[0-9.]\+\)\=\>"
syn match  sorvelDistrib     "\[\s*\zs[flhtgxbFLHTGXB]\ze\s"
syn match  sorvelChoice      "\<[xi]\ze\["
syn match  sorvelChoice      "\*\ze\["
syn match  sorvelCurve       "\<\%([cfelsCFELS]\|[vV][0-9.]\+\)\*\=\ze\s*\["

" --- Operators -----------------------------------------------------------------
syn match  sorvelFuse        "[:']"
syn match  sorvelLoop        "[<>]"
syn match  sorvelRepeat      "\<x\d\+\>"
syn match  sorvelLastValue   "\<[zZ]\>"

" --- Blocks ----------------------------------------------------------------------
syn match  sorvelInstrument  "\<i-\=\d*\ze\s*\%(\$\|=\)"
syn match  sorvelBrace       "[{}]"
syn match  sorvelPfield      "\<p\d\+" nextgroup=sorvelSpec skipwhite
syn region sorvelSpec        matchgroup=sorvelParen start="(" end=")" contained oneline contains=sorvelOutputType
syn region sorvelOutputLine  matchgroup=sorvelOutputMark start="^\s*>" end="$" contains=sorvelMacroCall,sorvelConstRef,sorvelRunValue,sorvelEquation

" --- Macros, constants, includes, conditional sections -------------------------
syn match  sorvelMacroCall   "\$\a\w*"
syn match  sorvelConstRef    "\~\a\w*"
syn match  sorvelRunValue    "\~@[1-4]\="
syn region sorvelEquation    matchgroup=sorvelConstRef start="\~\[" end="\]\|$" oneline contains=sorvelNumber,sorvelEqOperand
syn match  sorvelEqOperand   contained "@[1-4]\|?\|[-+*/%]\|\a\w*"
syn match  sorvelInclude     "#include\s*|[^|]*|"
syn match  sorvelDefine      "#define\s\+\a\w*" contains=sorvelDirective
syn match  sorvelDefine      "#undef\s\+\a\w*" contains=sorvelDirective
syn match  sorvelConstDef    "#const\s\+\a\w*" contains=sorvelDirective
syn match  sorvelDirective   contained "#\%(define\|undef\|const\)"
syn match  sorvelCondit      "#if\ze(\|#endif\>"

" --- Comments (last, so that they win) -------------------------------------------
syn keyword sorvelTodo       contained TODO FIXME XXX
syn match  sorvelComment     ";.*$" contains=sorvelTodo
syn region sorvelBlockComment start="/\*" end="\*/" contains=sorvelBlockComment,sorvelTodo

hi def link sorvelComment      Comment
hi def link sorvelBlockComment Comment
hi def link sorvelTodo         Todo
hi def link sorvelCommand      Statement
hi def link sorvelDdf          Function
hi def link sorvelInputType    Type
hi def link sorvelOutputType   StorageClass
hi def link sorvelParen        Delimiter
hi def link sorvelNumber       Number
hi def link sorvelRhythm       Number
hi def link sorvelPitch        Constant
hi def link sorvelDuration     Constant
hi def link sorvelDistrib      Special
hi def link sorvelChoice       Special
hi def link sorvelCurve        Special
hi def link sorvelFuse         Operator
hi def link sorvelLoop         Operator
hi def link sorvelRepeat       Operator
hi def link sorvelLastValue    Constant
hi def link sorvelInstrument   Label
hi def link sorvelBrace        Delimiter
hi def link sorvelPfield       Identifier
hi def link sorvelOutputMark   Operator
hi def link sorvelOutputLine   String
hi def link sorvelMacroCall    Macro
hi def link sorvelConstRef     Identifier
hi def link sorvelRunValue     Identifier
hi def link sorvelEqOperand    Identifier
hi def link sorvelInclude      Include
hi def link sorvelDefine       Macro
hi def link sorvelConstDef     Define
hi def link sorvelDirective    PreProc
hi def link sorvelCondit       PreCondit

let b:current_syntax = "sorvel"

let &cpo = s:cpo_save
unlet s:cpo_save
