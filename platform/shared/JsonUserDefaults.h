// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "engine/ports/FileStore.h"
#include "engine/ports/UserDefaults.h"

#include <map>
#include <string>

namespace vantle {

// The person's choices as one JSON object in FOLDER/DOMAIN/defaults.json, a key a choice. Booleans, strings
// and arrays of strings stand as they are, a date as {"date": "2026-11-20T12:00:00Z"}; everything else is
// kept and reads as absent.
//
// Each call goes to the file, so keys that somebody else writes meanwhile are seen and kept. A file that is
// no such object reads as empty; before the first change replaces it, it is set aside as
// defaults.json.corrupt.
class JsonUserDefaults final : public UserDefaults {
 public:
  JsonUserDefaults(FileStore& files, std::string folder, const std::string& domain);

  const std::string& path() const { return m_path; }

  std::optional<Value> object(const std::string& key) const override;
  bool contains(const std::string& key) const override;
  void set(const std::string& key, Value value) override;
  void remove(const std::string& key) override;
  std::unique_ptr<UserDefaults> openSuite(const std::string& name) const override; // null without a file
  bool copyFrom(const UserDefaults& other, const std::string& key) override;

 private:
  std::optional<Json> stored(const std::string& key) const;
  void change(const std::string& key, std::optional<Json> value);
  void save();

  FileStore& m_files;
  std::string m_folder;
  std::string m_path;
  // Changes that could not be written yet; absent values are removals. They are in force all the same.
  std::map<std::string, std::optional<Json>> m_pending;
  bool m_isLossTold = false; // that they are, since when they could be written last
};

// The object in the bytes; absent when they hold anything else.
std::optional<Json> decodeDefaults(const std::string& bytes);

} // namespace vantle
