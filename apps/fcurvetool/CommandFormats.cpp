#include "Commands.h"
#include "Files.h"
#include "Table.h"
#include "WriteDocument.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/FormatType.h>

#include <map>
#include <string>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

void AddFormats(CLI::App& app) {
    app.add_subcommand("formats", "List the file formats")->callback([] {
        struct Format {
            FormatType type;
            bool isRead = false;
            bool isWritten = false;
        };
        std::map<std::string, Format> formats;
        for (auto it = FormatFactory::beginReaderTypes(); it != FormatFactory::endReaderTypes(); ++it)
            formats[it->getFormatName()] = {*it, true, false};
        for (const FormatType& type : GetWritableFormats()) {
            Format& format = formats[type.getFormatName()];
            format.type = type;
            format.isWritten = true;
        }
        Table table;
        for (const char* heading : {"name", "title", "extension", "use"}) table.addColumn(heading, Table::Align::Left);
        for (const auto& [name, format] : formats) {
            table.addRow({name, format.type.getTitle(), std::string(".") + format.type.getExtension(),
                          std::string(format.isRead ? "read" : "") + (format.isRead && format.isWritten ? ", " : "")
                              + (format.isWritten ? "write" : "")});
        }
        Print(table.text());
    });
}

} // namespace fcurvetool
