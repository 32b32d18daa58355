examples/qap.qxm file=examples/data/nug14.dat best=1014 qxTimeLimit=2 qxNbThreads=1 qxSeed=1 qxVerbosity=0
