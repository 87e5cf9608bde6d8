// SPDX-License-Identifier: MIT
#pragma once

/// Which fault the effect has.
extern const char kFault[];
