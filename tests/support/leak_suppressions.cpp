// SPDX-License-Identifier: MIT
// For programs that draw text, when they are built with the address sanitizer.

/// Fontconfig loses a pattern, once a process, when the first font is chosen. What the editor itself would
/// lose at every opening is counted block by block in another test.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n";
}
