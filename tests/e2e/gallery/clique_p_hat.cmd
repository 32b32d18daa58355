examples/clique.qxm file=examples/data/p_hat300-1.clq qxTimeLimit=3 qxNbThreads=1 qxSeed=1 qxVerbosity=0
