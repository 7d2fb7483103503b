// SPDX-License-Identifier: Apache-2.0
// A set of precompiled headers belongs to a target, and a target needs a source.
int main() { }
