examples/carseq.qxm qxIterationLimit=100000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
