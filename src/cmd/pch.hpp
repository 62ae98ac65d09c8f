// What nearly every command file includes, compiled once for the folder; a file still names what it uses.
#pragma once

#include "../pch.hpp"

#include "cmd/dialogue.hpp"
#include "cmd/drawing_aids.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
