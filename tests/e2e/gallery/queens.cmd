examples/queens.qxm qxTimeLimit=3 qxNbThreads=1 qxSeed=1 qxVerbosity=0
