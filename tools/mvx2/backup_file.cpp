#include "backup_file.h"

#include "text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace mvx2tool {

namespace {

constexpr const char* format_name = "mvx2-backup";
constexpr std::size_t max_size = 1024UL * 1024UL;

[[noreturn]] void failErrno(const std::string& what, int error) {
  failFile(what + ": " + std::strerror(error));
}

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor(Descriptor&&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() {
    if (m_descriptor >= 0) close(m_descriptor);
  }
  int get() const { return m_descriptor; }

 private:
  int m_descriptor;
};

// Overwrites the keys in a document, if there are any.
void wipeKeys(Json& json) {
  auto* const document = json.get_ptr<Json::object_t*>();
  if (document == nullptr) return;
  for (auto& member : *document) {
    auto* const keys = member.first == "keys" ? member.second.get_ptr<Json::object_t*>() : nullptr;
    if (keys == nullptr) continue;
    for (auto& key : *keys)
      if (auto* const text = key.second.get_ptr<std::string*>()) wipe(*text);
  }
}

class WipedJson {
 public:
  explicit WipedJson(Json json) : m_json(std::move(json)) {}
  WipedJson(const WipedJson&) = delete;
  WipedJson(WipedJson&&) = delete;
  WipedJson& operator=(const WipedJson&) = delete;
  WipedJson& operator=(WipedJson&&) = delete;
  ~WipedJson() { wipeKeys(m_json); }
  Json& get() { return m_json; }

 private:
  Json m_json;
};

Secret readWhole(const std::string& file) {
  const Descriptor input(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (input.get() < 0) failErrno("cannot read " + file, errno);
  std::string text(max_size, '\0');
  std::size_t length = 0;
  ssize_t got = 1;
  while (got > 0 && length < text.size()) {
    got = read(input.get(), text.data() + length, text.size() - length);
    if (got > 0) length += static_cast<std::size_t>(got);
  }
  const int error = errno;
  if (got > 0) failFile("too long for a backup: " + file);
  if (got < 0) failErrno("cannot read " + file, error);
  text.resize(length);
  return Secret(std::move(text));
}

std::int64_t checkedSetting(const std::string& file, const Value& value, const Json& number) {
  if (!value.writable) failFile(std::string(value.name) + " in " + file + " cannot be written");
  const bool isFlag = value.kind == Kind::flag && number.is_boolean();
  if (!isFlag && !number.is_number_integer())
    failFile(std::string(value.name) + " in " + file + " is no number");
  const std::int64_t held =
      isFlag ? static_cast<std::int64_t>(number.get<bool>()) : number.get<std::int64_t>();
  if (!fits(value, held))
    failFile(std::string(value.name) + " in " + file + " is outside its range", rangeOf(value));
  return held;
}

void takeSettings(const std::string& file, const Json& settings, Backup& backup) {
  for (const auto& entry : settings.items()) {
    const auto isNamed = [&entry](const Value& value) { return entry.key() == value.name; };
    if (std::none_of(allValues().begin(), allValues().end(), isNamed))
      failFile("no value is named " + printable(entry.key()) + ", which is in " + file);
  }
  for (const Value& value : allValues())
    if (settings.contains(value.name))
      backup.settings.emplace_back(value, checkedSetting(file, value, settings[value.name]));
}

void takeKeys(const std::string& file, const Json& keys, Backup& backup) {
  for (const auto& entry : keys.items()) {
    const auto isNamed = [&entry](const Key& key) { return entry.key() == key.name; };
    if (std::none_of(allKeys().begin(), allKeys().end(), isNamed))
      failFile("no key is named " + printable(entry.key()) + ", which is in " + file);
    if (!entry.value().is_string() || !isKeyText(entry.value().get_ref<const std::string&>()))
      failFile("the key " + entry.key() + " in " + file + " is not written in hexadecimal digits");
    backup.keys.emplace_back(entry.key(), Secret(std::string(entry.value().get_ref<const std::string&>())));
  }
}

Json toDocument(const Backup& backup) {
  Json settings = Json::object();
  for (const auto& [value, number] : backup.settings) settings[value.name] = toJson(value, {number});
  Json document = {{"format", format_name},
                   {"schema", schema_number},
                   {"version", backup.version},
                   {"settings", settings}};
  for (const auto& [name, key] : backup.keys) document["keys"][name] = key.text();
  return document;
}

void writeAll(int descriptor, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t written = write(descriptor, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) failErrno("cannot write the backup", errno);
    done += static_cast<std::size_t>(written);
  }
}

mode_t readableByUmask() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666U & ~mask;
}

// The new name of a file is safe once its directory is.
void syncDirectory(const std::string& file) {
  const std::size_t slash = file.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : file.substr(0, slash + 1);
  const Descriptor opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.get() >= 0) fsync(opened.get());
}

// The file that FILE means: what a symbolic link leads to. A device or a pipe would be gone once a backup
// took its name.
std::string placeFor(const std::string& file) {
  std::error_code error;
  const auto place = std::filesystem::canonical(file, error);
  if (error) return file;  // new
  const auto status = std::filesystem::status(place, error);
  if (!std::filesystem::is_regular_file(status) && !std::filesystem::is_directory(status))
    failFile("cannot write " + file + ": it is no regular file");
  return place;
}

}  // namespace

Backup readBackup(const std::string& file) {
  const Secret text = readWhole(file);
  WipedJson document(Json::parse(text.text(), nullptr, false));
  Json& json = document.get();
  const bool isBackup = json.is_object() && json.value("format", Json()) == format_name;
  if (!isBackup) failFile("not a backup of mvx2: " + file);
  if (json.value("schema", Json()) != schema_number)
    failFile("a backup of another version of mvx2: " + file,
             "this mvx2 reads schema " + std::to_string(schema_number));
  if (!json.value("settings", Json()).is_object()) failFile("no settings in " + file);
  Backup backup;
  takeSettings(file, json["settings"], backup);
  if (json.contains("keys")) takeKeys(file, json["keys"], backup);
  return backup;
}

void writeBackup(const std::string& file, const Backup& backup) {
  WipedJson document(toDocument(backup));
  const Secret text(document.get().dump(2, ' ', false, Json::error_handler_t::replace) + '\n');
  const std::string place = placeFor(file);
  std::string beside = place + ".XXXXXX";
  const Descriptor output(mkostemp(beside.data(), O_CLOEXEC));
  if (output.get() < 0) failErrno("cannot write " + file, errno);
  try {
    if (backup.keys.empty()) fchmod(output.get(), readableByUmask());
    writeAll(output.get(), text.text());
    if (fsync(output.get()) != 0 || std::rename(beside.c_str(), place.c_str()) != 0)
      failErrno("cannot write " + file, errno);
  } catch (...) {
    unlink(beside.c_str());
    throw;
  }
  syncDirectory(place);
}

}  // namespace mvx2tool
