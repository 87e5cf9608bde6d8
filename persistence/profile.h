// SPDX-License-Identifier: MIT
#pragma once

namespace vocafade {

// The classic profile calls over the settings store. Texts are NUL-terminated bytes in any encoding. `file`
// names the application whose settings are meant; null stands for the running program. A section holds
// entries; a root value stands beside the sections. No call reports a failure: readers give the default,
// writers true.

/// [main-thread] Copies the entry's text to `buf`, which holds `len` bytes (a longer text is cut), or
/// `defaultText` when it is not there. The section is taken from the first scope that has one: the user's on
/// any host, the user's on this host, anybody's on this host, anybody's on any host; an entry missing there
/// is not looked for further. A null `entry` lists the entry names, each with a NUL, and one more NUL.
/// Returns the length of the (first) text in `buf`.
int GetPrivateProfileString(const char* section, const char* entry, const char* defaultText, char* buf,
                            int len, const char* file);
/// [main-thread] The user's entry as a decimal number (its first 255 bytes); `defaultValue` when it is
/// missing.
int GetPrivateProfileInt(const char* section, const char* entry, int defaultValue, const char* file);
/// [main-thread] Stores the user's entry. `entry` and `value` null: removes the section. Only `value` null:
/// changes nothing, but makes an empty section when there is none. A name that is null where one is needed is
/// complained about on the standard output. Always true.
bool WritePrivateProfileString(const char* section, const char* entry, const char* value, const char* file);
/// [main-thread] Copies at most `size` bytes of the user's binary entry; returns its whole length, 0 when it
/// is missing or a text.
int GetPrivateProfileBinary(const char* section, const char* entry, void* buf, int size, const char* file);
/// [main-thread] Stores `size` bytes as the user's entry, with the same rules for null. Always true.
bool WritePrivateProfileBinary(const char* section, const char* entry, const void* data, int size,
                               const char* file);

/// [main-thread] `GetPrivateProfileString` for the running program and the user's own section on any host
/// only.
int GetProfileString(const char* section, const char* entry, const char* defaultText, char* buf, int len);
/// [main-thread] `WritePrivateProfileString` for the running program. Always true.
bool WriteProfileString(const char* section, const char* entry, const char* value);

/// [main-thread] The running program's entry for anybody on this host; when that is empty or missing, the
/// entry from the first scope that has the section, or `defaultText`.
int GetSystemProfileString(const char* section, const char* entry, const char* defaultText, char* buf,
                           int len);
/// [main-thread] Stores the entry for anybody on this host; where that is not permitted, for the user. The
/// rules for null are those of `WritePrivateProfileString`. Always true.
bool WriteSystemProfileString(const char* section, const char* entry, const char* value);
/// [main-thread] The root value `name`, looked up like `GetSystemProfileString`.
int GetSystemProfileStringRoot(const char* name, const char* defaultText, char* buf, int len);

} // namespace vocafade
