// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

#define NL_CAT_LOCALE 1

typedef struct _nl_catalog* nl_catd;

VANTLE_C_BEGIN
char* catgets(nl_catd catalog, int set, int number, const char* otherwise);
int catclose(nl_catd catalog);
nl_catd catopen(const char* name, int flag);
VANTLE_C_END
