// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>
