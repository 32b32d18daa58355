examples/maxcut.qxm qxIterationLimit=2000000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
