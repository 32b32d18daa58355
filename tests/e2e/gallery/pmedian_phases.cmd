examples/pmedian_phases.qxm qxIterationLimit=0:70000,1:35000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
