examples/setpartition.qxm qxIterationLimit=1200000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
