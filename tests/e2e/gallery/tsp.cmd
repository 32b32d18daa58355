examples/tsp.qxm qxIterationLimit=170000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
