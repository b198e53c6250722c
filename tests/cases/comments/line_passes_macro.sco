
 a ; x */ 1 
 b ; y /* z 
 c $A */ 1 
e
