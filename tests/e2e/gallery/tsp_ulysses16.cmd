examples/tsp.qxm file=examples/data/ulysses16.tsp best=6859 qxIterationLimit=250000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
