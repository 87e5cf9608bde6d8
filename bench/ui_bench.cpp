// SPDX-License-Identifier: MIT
// What drawing the editor costs. The budget: the whole panel under 4 ms, a step of the meters under 0.3 ms,
// an idle with nothing to do next to nothing. The benchmarks with a window need a display: xvfb-run -s
// -noreset.

#include "ui/platform/platform.h"
#include "ui/ui.h"

#include <benchmark/benchmark.h>
#include <bit>
#include <cstdlib>
#include <memory>
#include <vector>
#include <xcb/xcb.h>

namespace {

using namespace vocafade;

constexpr int kWidth = 460;
constexpr int kHeight = 210;
constexpr int kMeterHeight = 133;

/// An image with every pixel of another colour, with soft edges where it is not `opaque`.
void Fill(CBitmap& image, int width, int height, bool opaque) {
    image.CreateBitmap(width, height);
    std::uint32_t* pixels = image.surface()->Pixels();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const unsigned alpha = opaque ? 255U : static_cast<unsigned>((x * 255) / width);
            const auto channel = [alpha](int v) { return (static_cast<unsigned>(v) & 0xFFU) * alpha / 255U; };
            pixels[y * image.surface()->Stride() + x] =
                (alpha << 24) | (channel(x) << 16) | (channel(y) << 8) | channel(x + y);
        }
    image.surface()->PixelsChanged();
}

/// Pictures of the panel's sizes, and its steps of painting.
class Panel : public CWnd {
  public:
    Panel() {
        Fill(background_, kWidth, kHeight, true);
        Fill(track_, 16, kMeterHeight, true);
        Fill(thumb_, 14, 24, false);
        Fill(knob_, 34, 34 * 61, false);
        Fill(meter_, 16, kMeterHeight, true);
        Fill(button_, 43, 32, false);
        font_.CreatePointFont(9, "Osaka");
    }

    void Draw(CDC& dc) {
        CDC screen;
        screen.CreateBitmapDC(kWidth, kHeight);
        Copy(screen, background_, 0, 0, {0, 0, kWidth, kHeight});
        screen.SetBkMode(TRANSPARENT);
        screen.SetTextColor(RGB(72, 72, 72));
        screen.SelectObject(&font_);
        int number = 0;
        for (const int x : {14, 125, 213, 300, 414}) {
            const CRect rect(x, 184, x + 49, 200);
            CString text;
            text.Format("%d.%d", (turn_ * 7 + number) % 20000, number % 10);
            ++number;
            const CSize size = screen.GetTextExtent(text);
            screen.ExtTextOut(rect.left + (rect.Width() - size.cx) / 2,
                              rect.top + (rect.Height() - size.cy) / 2 + 3, ETO_CLIPPED, &rect, text);
        }
        DrawMeters(screen);
        Copy(screen, button_, 270, 10, {0, 0, 43, 16});
        Copy(screen, button_, 216, 10, {0, 16, 43, 32});
        dc.BitBlt(0, 0, kWidth, kHeight, &screen, 0, 0, SRCCOPY);
        for (const int x : {48, 141, 229, 413}) {
            CDC fader;
            fader.CreateBitmapDC(16, kMeterHeight);
            Copy(fader, track_, 0, 0, {0, 0, 16, kMeterHeight});
            Copy(fader, thumb_, 1, turn_ % 100, {0, 0, 14, 24});
            dc.BitBlt(x, 45, 16, kMeterHeight, &fader, 0, 0, SRCCOPY);
        }
        Copy(dc, knob_, 307, 147, {0, 34 * (turn_ % 61), 34, 34 * (turn_ % 61) + 34});
        Copy(dc, button_, 24, 7, {0, 0, 25, 21});
        Copy(dc, button_, 64, 10, {0, 0, 27, 19});
        ++turn_;
    }

    void DrawMeters(CDC& dc) {
        for (const int x : {29, 38, 432, 441}) {
            CDC meter;
            meter.CreateBitmapDC(8, kMeterHeight);
            const int y = (turn_ * 3 + x) % kMeterHeight;
            Copy(meter, meter_, 0, 0, {0, 0, 8, kMeterHeight});
            Copy(meter, meter_, 0, y, {8, y, 16, kMeterHeight});
            dc.BitBlt(x, 45, 8, kMeterHeight, &meter, 0, 0, SRCCOPY);
        }
    }

    void Turn() { ++turn_; }

  protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message != WM_PAINT) return CWnd::WindowProc(message, wParam, lParam);
        CPaintDC dc(this);
        Draw(dc);
        return 0;
    }

  private:
    static void Copy(CDC& to, CBitmap& image, int x, int y, const CRect& from) {
        CDC source;
        source.SelectObject(&image);
        to.BitBlt(x, y, from.Width(), from.Height(), &source, from.left, from.top, SRCCOPY);
    }

    CBitmap background_, track_, thumb_, knob_, meter_, button_;
    CFont font_;
    int turn_ = 0;
};

/// A host's window with the panel in it.
class Editor {
  public:
    Editor() {
        connection_ = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(connection_) != 0) return;
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        const xcb_window_t host = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, host, screen->root, 0, 0, 500, 300, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_map_window(connection_, host);
        WaitForServer();
        open_ = frame.AttachHost(std::bit_cast<void*>(std::uintptr_t{host})) &&
                panel.Create(WindowClass{}, "", WS_CHILD | WS_VISIBLE, {0, 0, kWidth, kHeight}, &frame, 0);
        for (int i = 0; open_ && i < 5; ++i)
            frame.Idle();
    }
    ~Editor() {
        panel.DestroyWindow();
        frame.DetachHost();
        xcb_disconnect(connection_);
    }
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    bool IsOpen(benchmark::State& state) const {
        if (!open_) state.SkipWithError("no display");
        return open_;
    }
    CFrameWnd frame;
    Panel panel;

  private:
    void WaitForServer() {
        std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    }
    xcb_connection_t* connection_ = nullptr;
    bool open_ = false;
};

void PanelOffScreen(benchmark::State& state) {
    Panel panel;
    CDC dc;
    dc.CreateBitmapDC(kWidth, kHeight);
    for ([[maybe_unused]] auto _ : state)
        panel.Draw(dc);
}
BENCHMARK(PanelOffScreen)->Unit(benchmark::kMillisecond);

void PanelInItsWindow(benchmark::State& state) {
    Editor editor;
    if (!editor.IsOpen(state)) return;
    for ([[maybe_unused]] auto _ : state) {
        editor.panel.Invalidate();
        editor.frame.Idle();
    }
}
BENCHMARK(PanelInItsWindow)->Unit(benchmark::kMillisecond);

void MetersInTheirWindow(benchmark::State& state) {
    Editor editor;
    if (!editor.IsOpen(state)) return;
    for ([[maybe_unused]] auto _ : state) {
        editor.panel.Turn();
        CClientDC dc(&editor.panel);
        editor.panel.DrawMeters(dc);
    }
}
BENCHMARK(MetersInTheirWindow)->Unit(benchmark::kMillisecond);

void IdleWithNothingToDo(benchmark::State& state) {
    Editor editor;
    if (!editor.IsOpen(state)) return;
    for ([[maybe_unused]] auto _ : state)
        editor.frame.Idle();
}
BENCHMARK(IdleWithNothingToDo)->Unit(benchmark::kMicrosecond);

void OpenAndClose(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        Editor editor;
        if (!editor.IsOpen(state)) return;
    }
}
BENCHMARK(OpenAndClose)->Unit(benchmark::kMillisecond);

void MenuOf64Names(benchmark::State& state) {
    Editor editor;
    if (!editor.IsOpen(state)) return;
    CMenu menu;
    for (int i = 0; i < 64; ++i)
        menu.AppendMenu(MF_STRING, static_cast<UINT>(1010 + i),
                        (std::to_string(i) + " \xE6\xAD\x8C\xE3\x81\xAE\xE5\xA3\xB0").c_str());
    for ([[maybe_unused]] auto _ : state) {
        menu.TrackPopupMenu(0, 91, 13, &editor.panel);
        editor.frame.Idle();
    }
}
BENCHMARK(MenuOf64Names)->Unit(benchmark::kMillisecond);

} // namespace
