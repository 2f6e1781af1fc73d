#!/usr/bin/env bash
# What QUORVANE_EXPORT becomes for each kind of compiler: export-macro.sh SOURCE COMPILER
source "$(dirname "$0")/../support/checks.sh"
source=$1 compiler=$2

expansion() { "$compiler" -E -P -x c++ "$@" -include "$source/QuorvaneExport.h" - <<<QUORVANE_EXPORT | tail -n 1; }
expect_equal "the mark on Windows, in the library" '__declspec(dllexport)' "$(expansion -D_WIN32 -DQUORVANE_BUILDING)"
expect_equal "the mark on Windows, in a host" '__declspec(dllimport)' "$(expansion -D_WIN32)"
expect_equal "the mark elsewhere, in the library" '__attribute__((visibility("default")))' "$(expansion -DQUORVANE_BUILDING)"
expect_equal "the mark elsewhere, in a host" '__attribute__((visibility("default")))' "$(expansion)"
