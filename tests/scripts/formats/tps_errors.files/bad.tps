LM=1
0 x
ID=a
