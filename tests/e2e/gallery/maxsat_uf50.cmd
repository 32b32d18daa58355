examples/maxsat.qxm file=examples/data/uf50-01.cnf best=218 qxIterationLimit=1000000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
