// SPDX-License-Identifier: MIT
#pragma once

// jpeglib.h needs FILE and size_t to be known and does not see to it.
// clang-format off
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on
