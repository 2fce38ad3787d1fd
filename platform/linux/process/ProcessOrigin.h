// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

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
// many programs are installed in, or put into by a person, say nothing, unless they are parts of one: of
// "/opt/NAME/bin" it is "/opt/NAME".
std::string originOf(const std::string& executable,
                     const std::function<std::string(std::string_view variable)>& environment);

// What else comes with an app of this program, by the names that originOf has for it: the folder of the same
// name for what it brings along ("/usr/lib/NAME" of "/usr/bin/NAME"), and the mount of an image for what
// knows nothing of its file.
std::vector<std::string> furtherOriginsOf(const std::string& executable);

// originOf with the environment of this process, as far as it can be read in time.
std::string readOrigin(Pid pid, const std::string& executable);

} // namespace vantle
