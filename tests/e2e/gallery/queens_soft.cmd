examples/queens.qxm soft=true qxTimeLimit=3 qxNbThreads=1 qxSeed=1 qxVerbosity=0
