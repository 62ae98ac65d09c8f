// What nearly every command file includes, compiled once for the folder; a file still names what it uses.
#pragma once

#include "../pch.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
