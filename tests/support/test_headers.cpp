// SPDX-License-Identifier: MIT
// Nothing of its own: the headers that most tests include are read once, for this source, and all tests reuse that.
