#include "cli/usage.hpp"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace kova::cli {

namespace {

constexpr const char* kUsage =
    R"(kovacad-cli 1.1.7 - KovaCAD without its window

  kovacad-cli run [options]          run commands on a drawing
      --open FILE       start from this DWG / DXF / .kvcad (default: a new drawing)
      --template NAME   start from a template: metric, metric-a4, imperial, or a path
      --script FILE     command lines to run (an AutoCAD .scr works)
      -c LINE           one command line (repeatable; ";" or "" is Enter)
      --save FILE       save the result (.dwg, .dxf or .kvcad)
      --png FILE        also render the result to a PNG [--size WxH, default 1600x1000]
  kovacad-cli render FILE OUT.png [--size WxH]
  kovacad-cli mcp                    serve KovaCAD to AI agents (Model Context Protocol, stdio)
  kovacad-cli --version

Add it to an MCP client, e.g. Claude Code:
)";

/// A desktop installation keeps this program in a sibling directory; that copy is the one to advertise.
QString programPath() {
    const QString sibling = QCoreApplication::applicationDirPath() + QStringLiteral("/../cli/kovacad-cli.exe");
    const QString path = QFileInfo::exists(sibling) ? QFileInfo(sibling).absoluteFilePath()
                                                    : QCoreApplication::applicationFilePath();
    return QDir::toNativeSeparators(QDir::cleanPath(path));
}

}  // namespace

std::string usageText() {
    return std::string(kUsage) + "  claude mcp add --scope user kovacad -- \"" + programPath().toStdString() + "\" mcp";
}

}  // namespace kova::cli
