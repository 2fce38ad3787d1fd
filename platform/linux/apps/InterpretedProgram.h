// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// What an interpreter was told to run, as far as its command line has it.
struct InterpretedProgram {
  std::string file;   // its path as given, maybe a relative one; empty for a text, a module or a class
  std::string name;   // of a module or a class: its last part
  std::string from{}; // the first place that a class is looked for in, as given
  bool operator==(const InterpretedProgram&) const = default;
};

// The dynamic loader by any of its names, which can be called with a program ("ld-linux-x86-64.so.2").
bool isLoader(std::string_view fileName);

// An option of a shell's after which a text follows that it runs: "-c", also among others ("-lc").
bool isTextOption(std::string_view argument);

// Understands the options of Java and Python that have a value of their own; of all others the first argument
// that is no option is the file, unless a text was given ("-c", "-e").
InterpretedProgram interpretedProgram(std::string_view interpreter,
                                      const std::vector<std::string>& arguments);

// Without what shows only in what it was written: "monsterz.py" is monsterz, "Setup.EXE" Setup.
std::string_view withoutProgramEnding(std::string_view name);

// What a program that an interpreter runs is called, the likeliest first: its class or module, its file,
// unless that is called as thousands are ("main.py"), and the folder that it was installed in.
// `path` is the file's, absolute and with all links followed; empty where it is not known.
std::vector<std::string> programNames(const InterpretedProgram& program, std::string_view path);

} // namespace vantle
