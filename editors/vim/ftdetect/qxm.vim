" Quarrix modeling language: programs end in .qxm.
autocmd BufNewFile,BufRead *.qxm setfiletype qxm
