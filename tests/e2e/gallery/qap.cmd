examples/qap.qxm qxIterationLimit=300000 qxNbThreads=2 qxSeed=1 qxVerbosity=0
