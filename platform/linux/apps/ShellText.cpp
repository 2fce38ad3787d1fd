// SPDX-License-Identifier: MIT
#include "platform/linux/apps/ShellText.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vantle {

namespace {

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }

class CommandReader {
 public:
  CommandReader(std::string_view text, const std::vector<std::string>& given, const std::string& home)
      : m_text(text), m_given(given), m_home(home) {}

  std::optional<std::vector<ShellCommand>> read() {
    while (!m_text.empty()) {
      if (!takeNext()) return {};
    }
    return endCommand("") ? std::optional(std::move(m_commands)) : std::nullopt;
  }

 private:
  bool takeNext() {
    constexpr std::string_view onlyForShells = "`(){}*?!#";
    const char letter = take();
    switch (letter) {
    case ' ':
    case '\t':
      return endWord();
    case '\'':
      return takeSingleQuoted();
    case '"':
      return takeDoubleQuoted();
    case '\\':
      return !m_text.empty() && m_text.front() != '\n' && add(take());
    case '$':
      return takeValue();
    case '~':
      return m_isInWord ? add(letter) : takeHome();
    case '<':
    case '>':
      return takeRedirection(letter);
    case '&':
      if (isNext('>')) return takeRedirection(take());
      return endCommand(skip('&') ? "&&" : "&");
    case '|':
      return skip('|') && endCommand("||");
    case ';':
      return endCommand(";");
    case '\n':
      return endWord() && (m_words.empty() || endCommand(";"));
    default:
      return onlyForShells.find(letter) == std::string_view::npos && add(letter);
    }
  }

  bool isNext(char letter) const { return m_text.starts_with(letter); }
  char take() {
    const char letter = m_text.front();
    m_text.remove_prefix(1);
    return letter;
  }
  bool skip(char letter) {
    const bool isIt = isNext(letter);
    if (isIt) m_text.remove_prefix(1);
    return isIt;
  }
  bool add(char letter) {
    m_word += letter;
    return m_isInWord = true;
  }

  bool takeSingleQuoted() {
    const std::size_t end = m_text.find('\'');
    if (end == std::string_view::npos) return false;
    m_word += m_text.substr(0, end);
    m_text.remove_prefix(end + 1);
    return m_isInWord = true;
  }
  bool takeDoubleQuoted() {
    m_isInWord = true;
    while (!m_text.empty()) {
      const char letter = take();
      if (letter == '"') return true;
      if (letter == '`' || (letter == '$' && !takeValue())) return false;
      if (letter == '$') continue;
      constexpr std::string_view escaped = "$`\"\\";
      const bool isEscape =
          letter == '\\' && !m_text.empty() && escaped.find(m_text.front()) != std::string_view::npos;
      add(isEscape ? take() : letter);
    }
    return false;
  }
  // What follows a '$'.
  bool takeValue() {
    constexpr std::string_view name = "HOME";
    constexpr std::string_view braced = "{HOME}";
    if (m_text.starts_with(braced)) {
      m_text.remove_prefix(braced.size());
      return addHome();
    }
    const bool isNamed = m_text.starts_with(name);
    if (isNamed && (m_text.size() == name.size() || !isNamePart(m_text[name.size()]))) {
      m_text.remove_prefix(name.size());
      return addHome();
    }
    const char next = m_text.empty() ? '\0' : m_text.front();
    const bool isGiven = next == '@' || next == '*' || (next >= '1' && isDigit(next) && m_given.empty());
    if (!isGiven) return false;
    take();
    return add(givenWords);
  }
  bool takeHome() { return (m_text.empty() || m_text.find_first_of("/ \t\n;&") == 0) && addHome(); }
  bool addHome() {
    m_word += m_home;
    m_isInWord = true;
    return !m_home.empty();
  }

  bool takeRedirection(char letter) {
    const bool isNumber = m_isInWord && std::all_of(m_word.begin(), m_word.end(), isDigit);
    if (isNumber) {
      m_word.clear();
      m_isInWord = false;
    } else if (!endWord()) {
      return false;
    }
    if (letter == '<' && isNext('<')) return false; // what follows is a text
    if (!skip('>') && !skip('&')) skip('|');
    return !std::exchange(m_isPlace, true);
  }

  bool endWord() {
    if (!m_isInWord) return true;
    m_isInWord = false;
    std::string word = std::exchange(m_word, {});
    if (std::exchange(m_isPlace, false)) return true;
    if (word == std::string(1, givenWords)) {
      m_words.insert(m_words.end(), m_given.begin(), m_given.end());
      return m_words.size() > m_given.size(); // a program that is given is in no text
    }
    const bool isWhole = word.find(givenWords) == std::string::npos;
    m_words.push_back(std::move(word));
    return isWhole;
  }
  bool endCommand(const char* sequel) {
    if (!endWord() || m_isPlace) return false;
    if (m_words.empty()) return *sequel == '\0';
    m_commands.push_back({.words = std::exchange(m_words, {}), .sequel = sequel});
    return true;
  }

  static constexpr char givenWords = '\1'; // stands for them until the word is whole

  std::string_view m_text;
  const std::vector<std::string>& m_given;
  const std::string& m_home;
  std::vector<ShellCommand> m_commands;
  std::vector<std::string> m_words;
  std::string m_word;
  bool m_isInWord = false;
  bool m_isPlace = false; // the word is what a command writes to or reads from
};

} // namespace

bool isNamePart(char letter) {
  return letter == '_' || isDigit(letter) || (letter >= 'A' && letter <= 'Z') ||
         (letter >= 'a' && letter <= 'z');
}

std::size_t assignedName(std::string_view word) {
  const std::size_t equals = word.find('=');
  const std::string_view name = word.substr(0, equals);
  const bool isName = std::all_of(name.begin(), name.end(), isNamePart);
  return isName && equals != std::string_view::npos ? equals : 0;
}

std::optional<std::vector<ShellCommand>>
shellCommands(std::string_view text, const std::vector<std::string>& given, const std::string& home) {
  return CommandReader(text, given, home).read();
}

} // namespace vantle
