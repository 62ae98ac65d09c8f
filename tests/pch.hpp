// What nearly every test file includes, compiled once for all test programs; a file still names what it uses.
#pragma once

#include "../src/pch.hpp"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/model/drawing.hpp"
