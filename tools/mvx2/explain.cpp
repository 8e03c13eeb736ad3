#include "commands.h"
#include "pcsc_names.h"
#include "text.h"

namespace mvx2tool {

void explain(const Tool& tool, const std::string& code) {
  const auto explanation = explainText(code);
  if (!explanation)
    failUsage(printable(code) + " is no code",
              "give a PC/SC status (0x8010001D or its name), a status word (6982) or an unlock status (-2)");
  Table table;
  table.add({"Code", explanation->code + " (" + explanation->kind + ")"});
  table.add({"Name", explanation->name});
  table.add({"Meaning", explanation->meaning});
  table.add({"Remedy", explanation->remedy});
  tool.output.show({{"kind", explanation->kind},
                    {"code", explanation->code},
                    {"name", explanation->name},
                    {"meaning", explanation->meaning},
                    {"remedy", explanation->remedy}},
                   table);
}

}  // namespace mvx2tool
