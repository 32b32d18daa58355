examples/maxsat.qxm qxIterationLimit=500000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
