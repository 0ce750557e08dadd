ID=a
