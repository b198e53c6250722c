
;I-block #1 (i1):
i1    0.000   -nan 

e
