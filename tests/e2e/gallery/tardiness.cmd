examples/tardiness.qxm qxIterationLimit=35000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
