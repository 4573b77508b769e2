#!/usr/bin/env bash
# Shows that the checks of this folder can fail: each one is given a small tree that is in order, which it must
# accept, and then the same tree with one planted line, which it must report by file and line.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT

checked=0
fail() {
    echo "self_test: $*" >&2
    exit 1
}

# A tree in order, with what looks like a violation and is none.
make_tree() {
    rm -rf "${tree:?}"/*
    mkdir "$tree"/{app,ui,scan,service,discio,tools,tests}
    cat >"$tree/ui/window.cpp" <<'END'
#include "app/busy_task.h"
#include "app/identity.h"
#include "scan/scanner.h"
#include <QWidget>
auto* child = new QWidget(this);
END
    cat >"$tree/discio/reader.cpp" <<'END'
#include "discio/reader.h"
#include <vector>
// A new image; delete nothing, free() nothing. On _WIN32 as on __linux__.
Reader(const Reader&) = delete;
struct Free { void operator()(char* text) const { std::free(text); } };
const char* kUrl = "http://x"; const char* kText = "a \" new delete x";
END
    echo '#include "ui/window.h"' >"$tree/tests/window_test.cpp"
}

accepts() {
    local said
    make_tree
    said=$("$here/$1" "$tree") || fail "$1 refuses a tree that is in order: $said"
}

# refuses CHECK FILE LINE_OF_CODE: the line is put on line 1 of FILE.
refuses() {
    local check=$1 file=$2 code=$3 said
    make_tree
    touch "$tree/$file"
    printf '%s\n%s\n' "$code" "$(cat "$tree/$file")" >"$tree/$file.new"
    mv "$tree/$file.new" "$tree/$file"
    if said=$("$here/$check" "$tree"); then fail "$check accepts '$code' in $file"; fi
    grep -q "^$file:1: " <<<"$said" || fail "$check does not name $file:1 but says: $said"
    checked=$((checked + 1))
}

accepts check_includes.sh
refuses check_includes.sh scan/scanner.cpp '#include "ui/window.h"'
refuses check_includes.sh service/http.cpp '#include "scan/scanner.h"'
refuses check_includes.sh service/http.cpp '#include "discio/reader.h"'
refuses check_includes.sh discio/reader.cpp '# include "app/log.h"'
refuses check_includes.sh app/log.cpp '#include "app/busy_task.h"'
refuses check_includes.sh app/identity.h '#include "service/http.h"'
refuses check_includes.sh tools/service.cpp '#include <service/http.h>'
refuses check_includes.sh ui/window.cpp '#include "window.h"'
refuses check_includes.sh discio/reader.cpp '#include <QString>'
refuses check_includes.sh discio/reader.cpp '#include <QtCore/qstring.h>'
refuses check_includes.sh service/file_posix.cpp '#include <QFile>'
refuses check_includes.sh ui/window.cpp '#include "helpers/text.h"'

accepts check_platform.sh
refuses check_platform.sh discio/reader.cpp '#ifdef _WIN32'
refuses check_platform.sh ui/window.cpp '#if defined(Q_OS_LINUX)'
refuses check_platform.sh tests/window_test.cpp '#ifndef __linux__'
refuses check_platform.sh discio/reader.cpp 'auto* p = static_cast<char*>(std::malloc(4));'
refuses check_platform.sh service/http.cpp '    delete reply;'
refuses check_platform.sh service/http.cpp '    delete[] reply;'
refuses check_platform.sh scan/scanner.cpp 'auto* model = new Model;'

# The check of the notices is given notices and a program: sh, which needs the C library alone.
check_notices() {
    printf '%s\n' "$1" >"$tree/notices"
    "$here/check_notices.sh" "$tree/notices" /bin/sh
}
said=$(check_notices 'libc.so: the C library') || fail "check_notices.sh refuses notices that are in order: $said"
if said=$(check_notices 'libc.so, libplanted.so'); then fail "check_notices.sh accepts a library that nobody needs"; fi
grep -q "notices:1: libplanted.so " <<<"$said" || fail "check_notices.sh does not name libplanted.so but says: $said"
if said=$(check_notices 'libcurl'); then fail "check_notices.sh accepts a library that is not named"; fi
grep -q "^/bin/sh: needs libc.so" <<<"$said" || fail "check_notices.sh does not name libc.so but says: $said"
checked=$((checked + 2))

# The check of hardened programs is given a small one, built as it should be and then with one thing undone.
cat >"$tree/program.cpp" <<'END'
#include <cstdio>
#include <cstring>
int main(int count, char** arguments)
{
    char text[64];
    std::strcpy(text, arguments[0]);
    std::puts(text);
    return count;
}
END
check_hardening() {
    c++ -O2 -fPIE -pie -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 \
        -Wl,-z,relro,-z,now,-z,noexecstack "$@" -o "$tree/program" "$tree/program.cpp" 2>"$tree/said" \
        || fail "cannot build a program with $*: $(<"$tree/said")"
    "$here/check_hardening.sh" "$tree/program"
}
refuses_program() {
    local message=$1
    shift
    if said=$(check_hardening "$@"); then fail "check_hardening.sh accepts a program built with $*"; fi
    grep -q "^$tree/program: $message" <<<"$said" || fail "check_hardening.sh says of a program built with $*: $said"
    checked=$((checked + 1))
}
said=$(check_hardening) || fail "check_hardening.sh refuses a hardened program: $said"
refuses_program "is not position" -fno-pie -no-pie
refuses_program "finds functions" -Wl,-z,lazy
refuses_program "keeps the table" -Wl,-z,norelro
refuses_program "has an executable stack" -Wl,-z,execstack
refuses_program "does not check its stack" -fno-stack-protector
refuses_program "does not check its copies" -U_FORTIFY_SOURCE
refuses_program "looks for libraries" -Wl,-rpath,/nowhere
printf '%s\n' 'asm(".text\n.balign 8\n.quad main");' >>"$tree/program.cpp"
refuses_program "writes to its own code" -Wl,-z,notext

echo "self_test: the checks refused $checked planted violations"
