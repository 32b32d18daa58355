examples/coloring.qxm file=examples/data/huck.col best=11 qxTimeLimit=3 qxNbThreads=1 qxSeed=1 qxVerbosity=0
