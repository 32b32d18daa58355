examples/gap.qxm instance=4 qxTimeLimit=2 qxNbThreads=1 qxSeed=1 qxVerbosity=0
