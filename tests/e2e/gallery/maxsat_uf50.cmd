examples/maxsat.qxm file=examples/data/uf50-01.cnf best=218 qxTimeLimit=3 qxNbThreads=1 qxSeed=1 qxVerbosity=0
