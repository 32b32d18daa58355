examples/pmedian_phases.qxm fair=true qxIterationLimit=0:60000,1:60000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
