// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/ProcKernel.h"

#include <functional>
#include <string>
#include <string_view>

namespace vantle {

// What a process came with, when that is more than one program's file: it tells whose the processes are that
// have left their app's tree and session. Empty when there is nothing of the kind. The environment is asked
// for only where it decides.
//
// "wine:PREFIX": Wine's server, services and desktop serve one prefix, outlive the programs in it and are
// nobody's children.
//
// "image:FILE": an AppImage's file serves the file system that the app runs from, out of a session of its
// own.
//
// "folder:PATH": what a program brings along stands beside it, such as what waits for its crash. Folders that
// many programs are installed in, or put into by a person, say nothing.
std::string originOf(const std::string& executable,
                     const std::function<std::string(std::string_view variable)>& environment);

std::string readOrigin(const ProcKernel& kernel, Pid pid);

} // namespace vantle
