// SPDX-License-Identifier: MIT
#include "platform/linux/apps/ScriptText.h"

#include "platform/linux/apps/ExecLine.h"
#include "platform/linux/apps/ShellText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vantle {

namespace {

// A '$' or '`' that means itself, until its word is understood.
constexpr char plainDollar = '\1';
constexpr char plainBackquote = '\2';

using Words = std::vector<std::string>;

// Of "$NAME", "${NAME}", "$(COMMAND)" or "`COMMAND`", where `rest` begins after the first letter, the length
// of what follows that; absent where it has no end.
std::optional<std::size_t> lengthOfReference(char first, std::string_view rest) {
  if (first == '`' || rest.starts_with('{')) {
    const std::size_t end = rest.find(first == '`' ? '`' : '}');
    return end == std::string_view::npos ? std::nullopt : std::optional(end + 1);
  }
  std::size_t length = 0;
  if (rest.starts_with('(')) {
    int depth = 0;
    do {
      if (length == rest.size()) return {};
      if (rest[length] == '(') ++depth;
      if (rest[length] == ')') --depth;
      ++length;
    } while (depth > 0);
    return length;
  }
  while (length < rest.size() && isNamePart(rest[length])) ++length;
  constexpr std::string_view ofOneLetter = "@*#?$!-";
  const bool isOneLetter =
      length == 0 && !rest.empty() && ofOneLetter.find(rest.front()) != std::string_view::npos;
  return isOneLetter ? 1 : length;
}

// Takes a script apart into its commands. Of their words the quotes are gone, "$NAME", "$(COMMAND)" and
// "`COMMAND`" stand as they are. What a command reads from and writes to is left out; "(" and ")" are
// commands of their own.
class CommandReader {
 public:
  explicit CommandReader(std::string_view text) : m_text(text) {}

  // Empty at the end of the script, or of what can be understood of it.
  Words next() {
    Words words;
    while (words.empty() && !m_text.empty() && m_isWhole) words = takeCommand();
    return m_isWhole ? words : Words();
  }
  bool isWhole() const { return m_isWhole; } // false where a quote or the like has no end

 private:
  Words takeCommand() {
    m_words.clear();
    while (!m_text.empty() && m_isWhole) {
      if (m_text.front() == '(' || m_text.front() == ')') {
        if (m_isInWord && m_text.front() == '(') add('$'); // "NAME=(A B)": of no value that is known
        endWord();
        if (m_words.empty()) m_words.emplace_back(1, take());
        return std::move(m_words);
      }
      if (isEndOf(take())) break;
    }
    endWord();
    return std::move(m_words);
  }
  // Whether the command is over with this letter.
  bool isEndOf(char letter) {
    switch (letter) {
    case ' ':
    case '\t':
    case '\r':
      endWord();
      return false;
    case '\n':
      endWord();
      passText();
      return true;
    case '#':
      if (m_isInWord) {
        add(letter);
      } else {
        m_text.remove_prefix(std::min(m_text.find('\n'), m_text.size()));
      }
      return false;
    case '\'':
      takeSingleQuoted();
      return false;
    case '"':
      takeDoubleQuoted();
      return false;
    case '\\':
      if (!m_text.empty()) takeEscaped();
      return false;
    case '$':
    case '`':
      takeReference(letter);
      return false;
    case '<':
    case '>':
      takeRedirection(letter);
      return false;
    case '&':
      if (m_text.starts_with('>')) {
        takeRedirection(take());
        return false;
      }
      return true;
    default:
      if (letter == ';' || letter == '|') return true;
      add(letter);
      return false;
    }
  }

  char take() {
    const char letter = m_text.front();
    m_text.remove_prefix(1);
    return letter;
  }
  void add(char letter) {
    m_word += letter;
    m_isInWord = true;
  }
  void addPlain(char letter) { add(letter == '$' ? plainDollar : letter == '`' ? plainBackquote : letter); }
  void takeSingleQuoted() {
    const std::size_t end = m_text.find('\'');
    m_isInWord = true;
    if (end == std::string_view::npos) {
      m_isWhole = false;
      return;
    }
    for (const char letter : m_text.substr(0, end)) addPlain(letter);
    m_text.remove_prefix(end + 1);
  }
  void takeDoubleQuoted() {
    m_isInWord = true;
    while (!m_text.empty() && m_isWhole) {
      const char letter = take();
      if (letter == '"') return;
      constexpr std::string_view escaped = "$`\"\\\n";
      if (letter == '\\' && !m_text.empty() && escaped.find(m_text.front()) != std::string_view::npos) {
        takeEscaped();
      } else if (letter == '$' || letter == '`') {
        takeReference(letter);
      } else {
        add(letter);
      }
    }
    m_isWhole = false;
  }
  void takeEscaped() {
    const char letter = take();
    if (letter != '\n') addPlain(letter); // the line goes on
  }
  void takeReference(char first) {
    const std::optional<std::size_t> length = lengthOfReference(first, m_text);
    m_isWhole = m_isWhole && length;
    if (!length) return;
    add(first);
    m_word += m_text.substr(0, *length);
    m_text.remove_prefix(*length);
  }
  void takeRedirection(char letter) {
    const bool isNumber = m_isInWord && std::all_of(m_word.begin(), m_word.end(),
                                                    [](char each) { return each >= '0' && each <= '9'; });
    if (isNumber) {
      m_word.clear();
      m_isInWord = false;
    } else {
      endWord();
    }
    const bool isText = letter == '<' && m_text.starts_with('<') && !m_text.starts_with("<<");
    m_text.remove_prefix(std::min(m_text.find_first_not_of(isText ? "<-" : "<>&|"), m_text.size()));
    m_target = isText ? Target::textsEnd : Target::file;
  }
  // The lines up to a mark, which a command is given as what it reads.
  void passText() {
    if (m_textsEnd.empty()) return;
    const std::string end = std::exchange(m_textsEnd, {});
    while (!m_text.empty()) {
      const std::size_t length = std::min(m_text.find('\n'), m_text.size());
      std::string_view line = m_text.substr(0, length);
      m_text.remove_prefix(std::min(length + 1, m_text.size()));
      line.remove_prefix(std::min(line.find_first_not_of('\t'), line.size()));
      if (line == end) return;
    }
  }
  void endWord() {
    if (!std::exchange(m_isInWord, false)) return;
    std::string word = std::exchange(m_word, {});
    const Target target = std::exchange(m_target, Target::none);
    if (target == Target::none) {
      m_words.push_back(std::move(word));
    } else if (target == Target::textsEnd) {
      m_textsEnd = std::move(word);
    }
  }

  enum class Target { none, file, textsEnd }; // what the next word is

  std::string_view m_text;
  Words m_words;
  std::string m_word;
  std::string m_textsEnd;
  Target m_target = Target::none;
  bool m_isInWord = false;
  bool m_isWhole = true;
};

// How a script finds the folder that it stands in, without spaces and quotes and with one name for itself.
bool isOwnFolder(std::string text) {
  std::erase_if(text, [](char letter) { return letter == ' ' || letter == '"' || letter == '\n'; });
  for (const std::string_view own : {"${BASH_SOURCE[0]}", "${BASH_SOURCE}", "$BASH_SOURCE", "${0}"}) {
    for (std::size_t at = text.find(own); at != std::string::npos; at = text.find(own))
      text.replace(at, own.size(), "$0");
  }
  constexpr std::array<std::string_view, 9> known{
      "${0%/*}",           "$(dirname$0)",           "$(dirname--$0)",
      "`dirname$0`",       "$(cd$(dirname$0)&&pwd)", "$(dirname$(readlink-f$0))",
      "$(cd${0%/*}&&pwd)", "$(cd$(dirname$0);pwd)",  "$(dirname$(realpath$0))"};
  return std::find(known.begin(), known.end(), text) != known.end();
}

constexpr std::size_t longest = 4096; // of what a word stands for

// What a script knows of itself and has put down for later.
class Values {
 public:
  explicit Values(std::string folder) : m_folder(std::move(folder)) {}

  // The text with all that it stands for; absent for what only a shell understands.
  std::optional<std::string> in(std::string_view text) const {
    std::string result;
    while (!text.empty()) {
      const std::size_t plain = std::min(text.find_first_of("$`"), text.size());
      result += text.substr(0, plain);
      text.remove_prefix(plain);
      if (text.empty()) break;
      const std::string_view reference =
          text.substr(0, lengthOfReference(text.front(), text.substr(1)).value_or(text.size() - 1) + 1);
      text.remove_prefix(reference.size());
      const std::optional<std::string> value = valueOf(reference);
      if (!value || result.size() + value->size() > longest) return {};
      result += *value;
    }
    std::replace(result.begin(), result.end(), plainDollar, '$');
    std::replace(result.begin(), result.end(), plainBackquote, '`');
    return result;
  }
  void assign(std::string_view name, std::optional<std::string> value) {
    m_values[std::string(name)] = std::move(value);
  }

 private:
  std::optional<std::string> valueOf(std::string_view reference) const {
    if (isOwnFolder(std::string(reference))) return m_folder;
    reference.remove_prefix(1);
    if (reference.starts_with('{') && reference.ends_with('}'))
      reference = reference.substr(1, reference.size() - 2);
    const auto known = m_values.find(reference);
    return known == m_values.end() ? std::nullopt : known->second;
  }

  std::string m_folder;
  std::map<std::string, std::optional<std::string>, std::less<>> m_values;
};

bool isOneOf(std::initializer_list<std::string_view> words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool isBesideSomething(std::string_view path) {
  return path.find('/') != std::string_view::npos && !path.starts_with('/');
}

// What it has been given itself.
bool isGiven(std::string word) {
  std::erase(word, '"');
  return isOneOf({"$@", "$*", "${@}", "${*}", "${1+$@}", "${1:+$@}"}, word);
}

class Script {
 public:
  explicit Script(std::string folder) : m_values(std::move(folder)) {}

  ScriptsProgram read(const std::string& text) {
    CommandReader commands(text);
    for (Words words = commands.next(); !words.empty(); words = commands.next()) {
      if (!follow(std::move(words))) return {};
    }
    return commands.isWhole() ? m_only : ScriptsProgram();
  }

 private:
  // False when nothing is certain any more.
  bool follow(Words words) {
    const auto isKeyword = [](const std::string& word) {
      return isOneOf({"if", "then", "elif", "else", "while", "until", "do", "time", "!", "{"}, word);
    };
    words.erase(words.begin(), std::find_if_not(words.begin(), words.end(), isKeyword));
    const bool isExport = !words.empty() && isOneOf({"export", "readonly"}, words.front());
    const auto first =
        isExport ? words.end() : std::find_if(words.begin(), words.end(), [](const std::string& word) {
          return assignedName(word) == 0;
        });
    std::for_each(words.begin(), first, [&](const std::string& word) {
      assign(word, first == words.end()); // or for one program's life
    });
    words.erase(words.begin(), first);
    if (words.empty()) return true;
    if (words.front() == "(") m_outside.push_back(m_place);
    if (m_outside.size() > mostBrackets) return false;
    if (words.front() == ")" && !m_outside.empty()) {
      m_place = std::move(m_outside.back());
      m_outside.pop_back();
    }
    if (words.front() == "cd") m_place = words.size() == 2 ? pathIn(m_values.in(words.back())) : "";
    return words.front() != "exec" || become(std::move(words));
  }

  void assign(const std::string& word, bool isForAll) {
    const std::string name = word.substr(0, assignedName(word));
    m_hasPath = m_hasPath || name == "PATH";
    if (isForAll && !name.empty()) m_values.assign(name, m_values.in(word.substr(name.size() + 1)));
  }

  // From where the script is; empty where nobody knows.
  std::string pathIn(const std::optional<std::string>& path) const {
    if (!path || path->empty() || m_place.size() + path->size() > longest) return {};
    if (path->starts_with('/')) return *path;
    return m_place.empty() ? "" : (std::filesystem::path(m_place) / *path).lexically_normal().string();
  }

  bool become(Words words) {
    ScriptsProgram found;
    found.takesMore = isGiven(words.back());
    if (found.takesMore) words.pop_back();
    for (std::string& word : words) {
      const std::optional<std::string> value = m_values.in(word);
      const bool isPattern = word.find_first_of("*?[") != std::string::npos || word.starts_with('~');
      if (!value || isPattern) return false;
      word = *value;
    }
    if (words.size() == 1) return !found.takesMore; // it only says where the script writes to
    words = withoutPrefixes(std::move(words));
    if (words.empty() || words.front().empty()) return false;
    found.program = isBesideSomething(words.front()) ? pathIn(words.front()) : std::move(words.front());
    const bool isElsewhere = m_hasPath && !found.program.starts_with('/');
    if (found.program.empty() || isElsewhere) return false;
    found.arguments.assign(words.begin() + 1, words.end());
    found.folder = m_place;
    if (m_only.program.empty()) {
      m_only = std::move(found);
      return true;
    }
    m_only.takesMore = m_only.takesMore || found.takesMore;
    if (m_only.folder != found.folder) m_only.folder.clear();
    return m_only.program == found.program && m_only.arguments == found.arguments;
  }

  static constexpr std::size_t mostBrackets = 64;

  Values m_values;
  std::string m_place; // that the script has gone to; empty for where it was started, or where nobody knows
  std::vector<std::string> m_outside; // of each bracket
  bool m_hasPath = false;             // programs are where only the script says
  ScriptsProgram m_only;
};

} // namespace

ScriptsProgram programOfScript(const std::string& script, const std::string& folder) {
  return Script(folder).read(script);
}

} // namespace vantle
