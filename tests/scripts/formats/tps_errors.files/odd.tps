LM=1
0 1
ID=a
hello
