examples/binpacking.qxm qxIterationLimit=700000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
