examples/setcover.qxm qxIterationLimit=300000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
