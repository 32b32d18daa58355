examples/pmedian_phases.qxm fair=true qxTimeLimit=0:1,1:1 qxNbThreads=1 qxSeed=1 qxVerbosity=0
