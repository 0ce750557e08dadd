LM=2
0 0
1 1
ID=a
LM=1
0 0
ID=b
