examples/queens.qxm soft=true qxIterationLimit=500000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
