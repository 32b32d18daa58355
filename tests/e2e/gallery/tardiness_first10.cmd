examples/tardiness.qxm instance=71 first=10 best=1460 qxIterationLimit=150000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
