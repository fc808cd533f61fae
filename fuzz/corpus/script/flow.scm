DO
_assign %1=%1+1
IF %1=2
GOTO out:
ELSE
_print "x",%1
ENDIF
LOOP UNTIL 3
out:
WHILE %1<5
_assign %1=%1+1
ENDW
