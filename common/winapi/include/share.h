// Ways of sharing an open file (_wfsopen of tchar.h).
#pragma once

#define _SH_DENYRW 0x10
#define _SH_DENYNO 0x40
