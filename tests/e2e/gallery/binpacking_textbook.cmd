examples/binpacking.qxm textbook=true file=examples/data/N1C1W1_A.BPP best=25 qxIterationLimit=1500000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
