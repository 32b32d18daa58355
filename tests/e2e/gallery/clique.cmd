examples/clique.qxm qxTimeLimit=2 qxNbThreads=1 qxSeed=1 qxVerbosity=0
