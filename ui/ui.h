// SPDX-License-Identifier: MIT
#pragma once

/// The whole window and drawing layer.
#include "ui/controls.h"
#include "ui/dc.h"
#include "ui/dialog.h"
#include "ui/edit.h"
#include "ui/frame_wnd.h"
#include "ui/gdi.h"
#include "ui/geometry.h"
#include "ui/menu.h"
#include "ui/message_box.h"
#include "ui/message_map.h"
#include "ui/resources.h"
#include "ui/spin_button.h"
#include "ui/winuser.h"
#include "ui/wnd.h"
