LM=3
0 0
4 0
1 3
ID=Homo sapiens
SCALE=0.5

lm = 3
2 2
NA NA
3.5 -1e-1
CURVES=0
IMAGE=C:\images\Pan.jpg

LM=2
0 0
4 1
CURVES=1
POINTS=1
1 3
COMMENT=a curve of one point
ID=Gorilla

LM=3
NA NA
NA NA
NA NA
ID=Pongo
