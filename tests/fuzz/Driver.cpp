// SPDX-License-Identifier: MIT
// Changes the examples of a folder in ways that files get broken, as often as told: the same seed gives the
// same inputs on every machine. For the short run of the tests; scripts/fuzz lets a compiler look for the
// inputs that reach new code.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

// All of them are in this one program, each under its own name instead of libFuzzer's.
using Target = int(const std::uint8_t*, std::size_t);
extern "C" Target fuzz_asound, fuzz_autostart, fuzz_defaults, fuzz_exec, fuzz_inhibitors, fuzz_journal,
    fuzz_ledger, fuzz_pipewire, fuzz_stat, fuzz_status, fuzz_utf8;

namespace {

const std::map<std::string, Target*> targets{{"asound", fuzz_asound},
                                             {"autostart", fuzz_autostart},
                                             {"defaults", fuzz_defaults},
                                             {"exec", fuzz_exec},
                                             {"inhibitors", fuzz_inhibitors},
                                             {"journal", fuzz_journal},
                                             {"ledger", fuzz_ledger},
                                             {"pipewire", fuzz_pipewire},
                                             {"stat", fuzz_stat},
                                             {"status", fuzz_status},
                                             {"utf8", fuzz_utf8}};

const std::vector<std::string> pieces{"{",
                                      "}",
                                      "[",
                                      "]",
                                      "\"",
                                      ",",
                                      ":",
                                      "null",
                                      "true",
                                      "-1",
                                      "0",
                                      "1e999",
                                      "2147483648",
                                      "-2147483649",
                                      "18446744073709551615",
                                      "18446744073709551616",
                                      "\\u0000",
                                      "\\ud800",
                                      "\xEF\xBB\xBF",
                                      "\xed\xa0\x80",
                                      "\xf4\x90\x80\x80",
                                      "\xc0\xaf",
                                      ")",
                                      "(",
                                      " ",
                                      "\n",
                                      std::string(1, '\0')};

class Mutator {
 public:
  Mutator(std::uint64_t seed, std::vector<std::string> examples)
      : m_random(seed), m_examples(std::move(examples)) {}

  std::string next() {
    std::string text = m_examples[below(m_examples.size())];
    for (std::size_t changes = 1 + below(6); changes > 0; --changes) change(text);
    return text;
  }

 private:
  // Not a standard distribution: those differ between libraries.
  std::size_t below(std::size_t limit) {
    return limit == 0 ? 0 : static_cast<std::size_t>(m_random() % limit);
  }

  void change(std::string& text) {
    const std::size_t at = below(text.size() + 1);
    const std::size_t length = below(std::min<std::size_t>(text.size() - at, 40) + 1);
    switch (below(7)) {
    case 0:
      text.resize(at);
      break;
    case 1:
      text.erase(at, length);
      break;
    case 2:
      text.insert(at, std::string(text, at, length));
      break;
    case 3:
      text.insert(at, pieces[below(pieces.size())]);
      break;
    case 4:
      text.insert(at, 1, static_cast<char>(below(256)));
      break;
    case 5: {
      const std::string& other = m_examples[below(m_examples.size())];
      text = text.substr(0, at) + other.substr(below(other.size() + 1));
      break;
    }
    default:
      if (at < text.size()) text[at] = static_cast<char>(text[at] ^ (1 << below(8)));
    }
    if (text.size() > 4096) text.resize(4096);
  }

  std::mt19937_64 m_random;
  std::vector<std::string> m_examples;
};

void tryOut(Target* target, const std::string& input) {
  target(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

} // namespace

int main(int argc, char** argv) {
  const auto target = argc == 5 ? targets.find(argv[1]) : targets.end();
  if (target == targets.end()) {
    std::fprintf(stderr, "usage: %s TARGET EXAMPLES-FOLDER SEED INPUTS\n", argv[0]);
    return 2;
  }
  std::vector<std::string> examples{""};
  std::vector<std::filesystem::path> files{std::filesystem::directory_iterator(argv[2]), {}};
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    std::ifstream stream(file, std::ios::binary);
    examples.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
  }
  const std::uint64_t seed = std::strtoull(argv[3], nullptr, 10);
  const std::uint64_t count = std::strtoull(argv[4], nullptr, 10);
  for (const std::string& example : examples) tryOut(target->second, example);
  Mutator mutator(seed, examples);
  for (std::uint64_t input = 0; input < count; ++input) tryOut(target->second, mutator.next());
  std::printf("%zu examples and %llu inputs from seed %llu hold\n", examples.size(),
              static_cast<unsigned long long>(count), static_cast<unsigned long long>(seed));
  return 0;
}
