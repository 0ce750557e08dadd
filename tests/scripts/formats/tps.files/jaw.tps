LM3=2
0 0 1
4 0 -1.25
ID=Pan
LM3=2
5 5 5
6 6 6
ID=Hylobates
