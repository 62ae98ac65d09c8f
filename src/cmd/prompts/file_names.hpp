#pragma once

#include <string>
#include <string_view>

namespace kova::engine {
class Drawing;
}

namespace kova::cmd::commands {

/// The line with which OPEN and SAVEAS give up when they would need the file dialog; empty: the name can be typed.
std::string dialogRefusal(const engine::Drawing& drawing, const char* command);

/// The drawing file that a typed name means: as it stands, or with one of the known extensions, here or beside the
/// open drawing. Empty: there is none.
std::string findDrawingFile(const engine::Drawing& drawing, const std::string& name);

/// The command that writes pictures or plots with an extension (".pdf", in lower case); null: there is none.
const char* exporterOf(std::string_view extension);

/// A typed path, without the double quotes that may stand round it.
std::string typedPath(const std::string& line);

}  // namespace kova::cmd::commands
