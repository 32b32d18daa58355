examples/pmedian_phases.qxm fair=true qxTimeLimit=0:2,1:2 qxNbThreads=1 qxSeed=1 qxVerbosity=0
