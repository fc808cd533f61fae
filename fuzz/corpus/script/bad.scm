; c
IF 1=XYZ
ENDIF
ENDW
LOOP UNTIL %1
GOTO nowhere
_nothing 1,2
