#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/model/drawing.hpp"

namespace kova::headless {

/// A new drawing as the program starts with: metric values, ISO A3 layouts.
std::unique_ptr<engine::Drawing> freshDrawing();

/// The directories that are searched for templates, in order; those that do not exist are left out.
std::vector<std::string> templateDirectories();

/// The file name that a template's short name stands for ("metric" is acadiso.dwt); other names as they are.
std::string resolveTemplateName(const std::string& name);

/// Loads a template by name or path into a fresh drawing. Error text, empty on success. The three standard
/// templates are known to the program itself when no directory holds them.
/// `lines`: takes what the file could not give the drawing.
std::string loadTemplate(const std::string& name, engine::Drawing& drawing, std::vector<std::string>* lines = nullptr);

}  // namespace kova::headless
