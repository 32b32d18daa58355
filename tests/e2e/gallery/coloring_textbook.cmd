examples/coloring.qxm textbook=true file=examples/data/queen6_6.col best=7 qxIterationLimit=700000 qxNbThreads=1 qxSeed=1 qxVerbosity=0
