// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/FileStore.h"
#include "platform/simulated/SimulatedCalls.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace vantle {

// The person's own files, in memory.
class SimulatedFiles final : public FileStore {
 public:
  explicit SimulatedFiles(SimulatedCalls& calls) : m_calls(calls) {}

  // What is there, without a call.
  std::map<std::string, std::string> contents; // by path
  std::set<std::string> folders;
  std::set<std::string> fullFolders; // nothing can be written in or below these

  std::string applicationSupport() const override { return "/home/player/.local/share"; }
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override {
    if (!m_calls.read({.operation = Operation::readFile, .about = path})) return std::nullopt;
    const auto found = contents.find(path);
    if (found == contents.end() || found->second.size() > limit) return std::nullopt;
    return found->second;
  }
  bool writeAtomically(const std::string& path, const std::string& bytes) override {
    const bool isFull =
        std::any_of(fullFolders.begin(), fullFolders.end(),
                    [&path](const std::string& folder) { return path.starts_with(folder + "/"); });
    if (isFull) return false;
    return m_calls.change({.operation = Operation::writeFile, .about = path, .detail = bytes},
                          [&] { contents[path] = bytes; });
  }
  bool exists(const std::string& path) const override {
    m_calls.read({.operation = Operation::fileExists, .about = path});
    return contents.contains(path);
  }
  bool rename(const std::string& path, const std::string& newPath) override {
    bool isRenamed = false;
    m_calls.change({.operation = Operation::renameFile, .about = path, .detail = newPath}, [&] {
      auto file = contents.extract(path);
      if (file.empty()) return;
      contents[newPath] = std::move(file.mapped());
      isRenamed = true;
    });
    return isRenamed;
  }
  void createFolders(const std::string& path) override {
    m_calls.change({.operation = Operation::createFolders, .about = path}, [&] { folders.insert(path); });
  }
  void removeFolder(const std::string& path) override {
    m_calls.change({.operation = Operation::removeFolder, .about = path}, [&] {
      folders.erase(path);
      std::erase_if(contents, [&](const auto& file) { return file.first.starts_with(path + "/"); });
    });
  }

 private:
  SimulatedCalls& m_calls;
};

} // namespace vantle
