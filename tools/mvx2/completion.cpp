#include "grammar.h"
#include "text.h"
#include "values.h"

#include <map>

namespace mvx2tool {

namespace {

// The words that may follow the words of a command. The empty path is the bare tool.
using Candidates = std::map<std::string, std::vector<std::string>>;

std::vector<std::string> namesOfValues(bool writableOnly) {
  std::vector<std::string> names;
  for (const Value& value : allValues())
    if (value.writable || !writableOnly) names.emplace_back(value.name);
  return names;
}

// What a command takes besides options, where that is a word of ours.
std::vector<std::string> argumentsOf(const std::string& path) {
  if (path == "get" || path == "watch") return namesOfValues(false);
  if (path == "set") return namesOfValues(true);
  if (path == "completion") return {"bash", "zsh"};
  std::vector<std::string> names;
  if (path == "key get" || path == "key set")
    for (const Key& key : allKeys()) names.emplace_back(key.name);
  return names;
}

// NOLINTNEXTLINE(misc-no-recursion): groups of commands are two levels deep
void collect(const CLI::App& app, const std::string& path, Candidates& candidates) {
  std::vector<std::string>& words = candidates[path];
  words = argumentsOf(path);
  for (const CLI::App* command : app.get_subcommands([](const CLI::App* /*any*/) { return true; })) {
    words.push_back(command->get_name());
    collect(*command, path.empty() ? command->get_name() : path + ' ' + command->get_name(), candidates);
  }
  for (const CLI::Option* option : app.get_options())
    for (const std::string& name : option->get_lnames()) words.push_back("--" + name);
}

// The cases of a shell: one line for each path.
std::string casesOf(const Candidates& candidates, const std::vector<std::string>& everywhere) {
  std::string cases;
  for (const auto& [path, own] : candidates) {
    std::vector<std::string> words = own;
    if (!path.empty()) words.insert(words.end(), everywhere.begin(), everywhere.end());
    cases += "    \"" + path + "\") candidates=\"" + join(words, " ") + "\" ;;\n";
  }
  return cases;
}

std::string pathsOf(const Candidates& candidates) {
  std::vector<std::string> quoted;
  for (const auto& entry : candidates)
    if (!entry.first.empty()) quoted.push_back('"' + entry.first + '"');
  return join(quoted, "|");
}

}  // namespace

std::string completionScript(const CLI::App& app, const std::string& shell) {
  Candidates candidates;
  collect(app, "", candidates);
  std::vector<std::string> everywhere;
  for (const std::string& word : candidates[""])
    if (word[0] == '-' && word != "--version" && word != "--help") everywhere.push_back(word);

  const bool isBash = shell == "bash";
  const std::string first = isBash ? "1" : "2";  // zsh counts words from 1
  const std::string end = isBash ? "COMP_CWORD" : "CURRENT";
  const std::string words = isBash ? "COMP_WORDS" : "words";
  std::string script = isBash ? "# bash completion of mvx2\n" : "#compdef mvx2\n";
  script += "_mvx2() {\n  local place=\"\" word=\"\" candidates=\"\" i\n";
  script += "  for ((i = " + first + "; i < " + end + "; i++)); do\n";
  script += "    word=\"${" + words + "[i]}\"\n";
  script += "    case \"${place:+$place }$word\" in\n";
  script += "      " + pathsOf(candidates) + ") place=\"${place:+$place }$word\" ;;\n    esac\n  done\n";
  script += "  case \"$place\" in\n" + casesOf(candidates, everywhere) + "  esac\n";
  script += "  [ \"$word\" = --reader ] && candidates=\"any mvx3 other\"\n";
  script +=
      isBash
          ? "  COMPREPLY=($(compgen -W \"$candidates\" -- \"${COMP_WORDS[COMP_CWORD]}\"))\n}\n"
            "complete -o default -F _mvx2 mvx2\n"
          : "  compadd -- ${=candidates}\n  case \"$place\" in\n"
            "    backup|diff|restore|\"key set\"|\"sam unlock\") _files ;;\n  esac\n}\ncompdef _mvx2 mvx2\n";
  return script;
}

}  // namespace mvx2tool
