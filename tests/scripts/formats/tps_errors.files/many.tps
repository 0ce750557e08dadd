LM=1
0 1 2
ID=a
