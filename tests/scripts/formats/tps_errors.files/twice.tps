LM=1
0 1
ID=a b
LM=1
0 0
ID=a_b
