// SPDX-License-Identifier: MIT
#pragma once

/// Before every piece that kernels are built from: a vector that crosses a real call goes through memory.
#define VOCAFADE_ALWAYS_INLINE [[gnu::always_inline]] inline
