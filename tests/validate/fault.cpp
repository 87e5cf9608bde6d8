// SPDX-License-Identifier: MIT
#include "tests/validate/fault.h"

const char kFault[] = VOCAFADE_FAULT;
