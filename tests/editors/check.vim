" check.vim -- checks the Vim syntax file on the examples: run as
"   vim -u NONE -es -N -S tests/editors/check.vim SOURCE_DIR/examples/variants.sor
" from the source directory's root (the buffer is the example to look at).
" Writes each mismatch to the standard output and exits with status 1 when
" there is one (:cquit), 0 otherwise.
source editors/vim/syntax/sorvel.vim

" [a text that picks the line, the token, the highlight group under it]
let s:checks = [
      \ ['; variants.sor', 'variants.sor', 'sorvelComment'],
      \ ['#include', '#include', 'sorvelInclude'],
      \ ['#const VARIANT', '#const', 'sorvelDirective'],
      \ ['#const VARIANT', 'VARIANT', 'sorvelConstDef'],
      \ ['#define MOTIF', 'MOTIF', 'sorvelDefine'],
      \ ['#define MOTIF', '$b', 'sorvelMacroCall'],
      \ ['te(120)', 'te', 'sorvelCommand'],
      \ ['#if(~VARIANT)', '#if', 'sorvelCondit'],
      \ ['#if(~VARIANT)', '~VARIANT', 'sorvelConstRef'],
      \ ['#if(~[1', 'VARIANT', 'sorvelEqOperand'],
      \ ['#endif', '#endif', 'sorvelCondit'],
      \ ['i$LEAD = 5 0 8 {', 'i', 'sorvelInstrument'],
      \ ['i$LEAD = 5 0 8 {', '$LEAD', 'sorvelMacroCall'],
      \ ['i$LEAD = 5 0 8 {', '{', 'sorvelBrace'],
      \ ['p3 ~LEAD_LEGATO', 'p3', 'sorvelPfield'],
      \ ['p4(in) ~LEAD_AMP', 'in', 'sorvelOutputType'],
      \ ['p5(op) no $MOTIF(c4', 'no', 'sorvelInputType'],
      \ ['p5(op) no $MOTIF(c4', 'c4', 'sorvelPitch'],
      \ ['p5(op) no $MOTIF(c4', "'", 'sorvelFuse'],
      \ ['p2 4', '4', 'sorvelNumber'],
      \ ]

let s:out = []
for [s:pick, s:token, s:group] in s:checks
  let s:lnum = search('\V' . escape(s:pick, '\'), 'cw')
  if s:lnum == 0
    call add(s:out, 'FAIL: no line holds "' . s:pick . '"')
    continue
  endif
  let s:col = stridx(getline(s:lnum), s:token) + 1
  let s:name = synIDattr(synID(s:lnum, s:col, 1), 'name')
  if s:col == 0 || s:name !=# s:group
    call add(s:out, 'FAIL: line ' . s:lnum . ': "' . s:token . '" is ' . string(s:name) . ', not ' . s:group)
  endif
  call cursor(1, 1)
endfor

if empty(s:out)
  call writefile(['ok: ' . len(s:checks) . ' tokens of ' . expand('%:t') . ' highlighted as expected'], '/dev/stdout')
  qall!
endif
call writefile(s:out, '/dev/stdout')
cquit
