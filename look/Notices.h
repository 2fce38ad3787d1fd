// SPDX-License-Identifier: MIT
#pragma once

#include "engine/NoticeWords.h"

namespace vantle {

// The notices' texts in the language of the views.
NoticeWords noticeWords();

} // namespace vantle
