
;I-block #1 (i1):
i1    0.000  1.000      -nan 
i1    1.000  1.000      -nan 

e
