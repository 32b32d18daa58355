examples/pmedian.qxm textbook=true file=examples/data/pmed2.txt best=4093 qxIterationLimit=1200000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
