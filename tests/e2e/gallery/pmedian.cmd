examples/pmedian.qxm qxIterationLimit=70000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
