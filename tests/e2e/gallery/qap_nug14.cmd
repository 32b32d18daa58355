examples/qap.qxm file=examples/data/nug14.dat best=1014 qxIterationLimit=80000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
