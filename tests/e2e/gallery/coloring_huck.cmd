examples/coloring.qxm file=examples/data/huck.col best=11 qxIterationLimit=400000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
