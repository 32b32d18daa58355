examples/pmedian.qxm textbook=true file=examples/data/pmed2.txt qxTimeLimit=3 qxNbThreads=1 qxSeed=1 qxVerbosity=0
