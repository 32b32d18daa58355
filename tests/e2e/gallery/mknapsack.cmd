examples/mknapsack.qxm qxIterationLimit=1000000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
