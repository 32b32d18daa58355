examples/tardiness.qxm instance=3 qxIterationLimit=25000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
