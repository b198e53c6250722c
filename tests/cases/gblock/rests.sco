
;I-block #1 (i1):
;I-block #1 (i2):
i2    0.000  1.000 

;I-block #2 (i3):
;I-block #2 (i4):
i4    0.000  1.000 

e
