examples/clique.qxm file=examples/data/p_hat300-1.clq qxIterationLimit=50000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
