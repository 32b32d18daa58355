examples/pmedian_phases.qxm qxTimeLimit=0:2,1:1 qxNbThreads=1 qxSeed=1 qxVerbosity=0
