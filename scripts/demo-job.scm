_connect NOPROMPT
_load SCRIPTS\SAMPLE.HEX
_download
_xorchecksum 8
_addcchecksum 16
_clearmemory
_upload
_compare
_xorchecksum 8
_addcchecksum 16
