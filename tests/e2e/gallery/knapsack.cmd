examples/knapsack.qxm qxIterationLimit=200000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
