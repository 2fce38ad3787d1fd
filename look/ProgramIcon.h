// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>

namespace vantle {

// The program's own icon as task bars and title bars show it, in the sizes in pixels that they ask for.
QIcon programIcon();

} // namespace vantle
