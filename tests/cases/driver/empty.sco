
e
