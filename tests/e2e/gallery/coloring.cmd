examples/coloring.qxm qxIterationLimit=400000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
