#include "commands.h"
#include "sam.h"
#include "secrets.h"
#include "text.h"

namespace mvx2tool {

namespace {

constexpr std::size_t key_size = 16;

}  // namespace

void showSam(const Tool& tool) {
  Sam sam(tool);
  const std::string serial = sam.serial();
  Table table;
  table.add({"SAM reader", sam.reader()});
  table.add({"SAM serial", serial});
  tool.output.show({{"reader", sam.reader()}, {"serial", serial}}, table);
}

void unlockSam(const Tool& tool, const std::string& keyFile) {
  const Secret digits = readSecret(keyFile);
  auto bytes = parseHexBytes(digits.text());
  const Secret key(bytes.value_or(""));
  if (bytes) wipe(*bytes);
  if (key.text().size() != key_size)
    failFile("not 32 hexadecimal digits: " + (keyFile == "-" ? "standard input" : keyFile));
  Sam sam(tool);
  sam.unlock(key.text());
  tool.output.show({{"reader", sam.reader()}, {"unlocked", true}},
                   tool.output.quiet ? "" : "the SAM in " + sam.reader() + " is unlocked\n");
}

}  // namespace mvx2tool
