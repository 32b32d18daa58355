" Vim syntax file
" Language: Quarrix modeling language (.qxm)
" Install: copy syntax/ and ftdetect/ into ~/.vim/ (the Debian package puts
" them in /usr/share/vim/vimfiles/).

if exists("b:current_syntax")
  finish
endif

" Keywords are case-sensitive: If and TRUE are identifiers.
syn case match

syn keyword qxmStatement    function return local
syn keyword qxmConditional  if else
syn keyword qxmRepeat       for in while do
syn keyword qxmModifier     minimize maximize constraint
syn keyword qxmConstant     true false nil

" Reserved for future use: the scanner refuses them wherever they appear.
syn keyword qxmReserved     const self this var break case continue goto switch
syn keyword qxmReserved     catch class final object throw

" Built-in functions: maps and inclusion, input and output, strings, the
" model's operators by name, and the solver functions.
syn keyword qxmBuiltin      count keys values map add remove include error
syn keyword qxmBuiltin      openRead openWrite openAppend eof readInt readString readln
syn keyword qxmBuiltin      print println close
syn keyword qxmBuiltin      toInt toString split trim
syn keyword qxmBuiltin      abs and bool dist div eq geq gt iif leq lt max min mod neq not
syn keyword qxmBuiltin      or prod sqrt sum xor
syn keyword qxmBuiltin      getValue setValue setObjectiveBound

" Global variables read or set by the launcher.
syn keyword qxmReservedVar  qxSeed qxNbThreads qxAnnealingLevel qxVerbosity
syn keyword qxmReservedVar  qxTimeBetweenDisplays qxTimeLimit qxIterationLimit
syn keyword qxmReservedVar  qxAdvancedParams qxSolutionStatus

syn match   qxmNumber       "\<\d\+\>"
syn match   qxmOperator     "<-\|&&\|||\|<=\|>=\|==\|!=\|\.\."
syn match   qxmEscape       contained +\\[\\"'tnrfb]+
syn match   qxmBadEscape    contained +\\[^\\"'tnrfb]+
syn region  qxmString       start=+"+ skip=+\\\\\|\\"+ end=+"+ contains=qxmEscape,qxmBadEscape
syn keyword qxmTodo         contained TODO FIXME XXX NOTE
syn match   qxmLineComment  "//.*$" contains=qxmTodo,@Spell
syn region  qxmComment      start="/\*" end="\*/" contains=qxmTodo,@Spell
" Illegal characters outside strings and comments.
syn match   qxmIllegal      "[#$'@`~^\\]"

hi def link qxmStatement    Statement
hi def link qxmConditional  Conditional
hi def link qxmRepeat       Repeat
hi def link qxmModifier     Keyword
hi def link qxmConstant     Constant
hi def link qxmReserved     Error
hi def link qxmBuiltin      Function
hi def link qxmReservedVar  Identifier
hi def link qxmNumber       Number
hi def link qxmOperator     Operator
hi def link qxmEscape       SpecialChar
hi def link qxmBadEscape    Error
hi def link qxmString       String
hi def link qxmTodo         Todo
hi def link qxmLineComment  Comment
hi def link qxmComment      Comment
hi def link qxmIllegal      Error

let b:current_syntax = "qxm"
