// A backup: the writable values of a terminal in a file, and its keys when they were asked for.
#ifndef MVX2TOOL_BACKUP_FILE_H
#define MVX2TOOL_BACKUP_FILE_H

#include "secrets.h"
#include "values.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace mvx2tool {

struct Backup {
  std::string version = {};  // of the firmware that it comes from, for people
  std::vector<std::pair<Value, std::int64_t>> settings = {};
  std::vector<std::pair<std::string, Secret>> keys = {};
};

// Reads and checks a whole file, so that nothing of a wrong one is ever written to a terminal; fails with
// Exit::file. The settings come in the order in which they are to be written, whatever the file's order.
Backup readBackup(const std::string& file);

// Writes beside the file and then puts it in its place: the file is the old one or the new one, never a part.
// Only the owner may read it when it holds keys. Fails with Exit::file.
void writeBackup(const std::string& file, const Backup& backup);

}  // namespace mvx2tool

#endif
