#!/usr/bin/env bash
# Builds the README's snippets against the installed package, so that a snippet a host would copy
# and that does not compile or load fails here:
# - each CMake block is a host project of its own; where a block names no executable, the C++
#   fragments are its sources, compiled and linked as the bodies of one function;
# - the block with a main() is the Qt Quick block's main.cpp, and its window (the QML block that is
#   a window) its Main.qml, which also makes the other QML blocks; the host runs offscreen, and a
#   QML error in any of them fails the build.
set -euo pipefail
prefix=$1
work=$2
readme=$3
rm -rf "$work"
mkdir -p "$work/blocks"
awk -v out="$work/blocks" '
    /^```(cpp|cmake|qml)$/ { n++; file = sprintf("%s/%02d.%s", out, n, substr($0, 4)); inside = 1; next }
    /^```/ { inside = 0; next }
    inside { print > file }
' "$readme"

# The C++ fragments: their includes first, then each as a block of one member function, in a host
# with the names the README's fragments take for granted.
fragments=$work/fragments.cpp
{
    grep -L 'int main(' "$work"/blocks/*.cpp | xargs grep -h '^#include' | sort -u
    cat <<'EOF'
#include <Brevanti/BVT.h>
#include <Brevanti/BVTNotify.h>
#include <Brevanti/BVTNotifyPreferencesViewController.h>
#include <Brevanti/Client.h>
#include <Brevanti/Logging.h>
#include <Brevanti/Network.h>
#include <Brevanti/ServiceRouter.h>
#include <Brevanti/platform/NavigationController.h>
#include <Brevanti/platform/Screen.h>
#include <Brevanti/platform/Window.h>
#include <QtWidgets>

struct HostLog
{
    void write(const QString &) { }
} myLog;
class HomeController : public bvt::ViewController
{
};
class Host : public QObject
{
public:
    void show(const QVariant &) { }
    void fragments(int argc, char **argv, QApplication &app, QWidget &window);

    bvt::Client *brevanti = bvt::Client::instance(); // as a fragment before names it
};

void Host::fragments(int argc, char **argv, QApplication &app, QWidget &window)
{
EOF
    for block in "$work"/blocks/*.cpp; do
        grep -q 'int main(' "$block" && continue
        echo "    {"
        grep -v '^#include' "$block" | sed 's/^/        /'
        echo "    }"
    done
    cat <<'EOF'
    Q_UNUSED(argc);
    Q_UNUSED(argv);
    Q_UNUSED(app);
    Q_UNUSED(window);
}

int main()
{
    return 0;
}
EOF
} >"$fragments"

# The QML blocks: the window is Main.qml; the others are components it makes, a fragment of
# statements inside a component's Component.onCompleted.
window=
others=()
for block in "$work"/blocks/*.qml; do
    name=Snippet$(basename "$block" .qml)
    {
        grep -q '^import' "$block" || printf 'import QtQuick\nimport QtQuick.Controls\nimport Brevanti\n'
        if grep -qE '^[A-Z][A-Za-z]* \{' "$block"; then
            cat "$block"
        else
            printf 'Item {\n    Component.onCompleted: {\n'
            sed 's/^/        /' "$block"
            printf '    }\n}\n'
        fi
    } >"$work/$name.qml"
    if grep -qE '^(Application)?Window \{' "$block"; then
        window=$name
    else
        others+=("$name")
    fi
done
[ -n "$window" ] || { echo "no QML block is a window"; exit 1; }

built=0
for block in "$work"/blocks/*.cmake; do
    # A block that fetches the sources from a repository cannot be built from the installed package.
    grep -q 'FetchContent' "$block" && continue
    project=$work/$(basename "$block" .cmake)
    mkdir -p "$project"
    {
        echo 'cmake_minimum_required(VERSION 3.22)'
        echo 'project(ReadmeSnippet LANGUAGES CXX)'
        echo 'set(CMAKE_CXX_STANDARD 17)'
        if ! grep -qE 'add_executable\(myapp' "$block"; then
            echo 'add_executable(myapp fragments.cpp)'
            cp "$fragments" "$project/"
        else
            for main in "$work"/blocks/*.cpp; do
                grep -q 'int main(' "$main" && cp "$main" "$project/main.cpp"
            done
            # The window makes each other block, then ends the host once the engine settled.
            {
                sed '$d' "$work/$window.qml"
                for other in "${others[@]}"; do
                    echo "    $other { }"
                    cp "$work/$other.qml" "$project/"
                done
                echo '    Timer { running: true; interval: 500; onTriggered: Qt.quit() }'
                echo '}'
            } >"$project/Main.qml"
            printf 'qt_add_resources(myapp snippets PREFIX / FILES %s)\n' \
                "$(cd "$project" && ls Snippet*.qml 2>/dev/null | tr '\n' ' ')"
        fi
        cat "$block"
    } >"$project/CMakeLists.txt.in"
    # The snippet block names the executable; the snippets' resources are added after it.
    {
        grep -v '^qt_add_resources(myapp snippets' "$project/CMakeLists.txt.in"
        grep '^qt_add_resources(myapp snippets' "$project/CMakeLists.txt.in" || true
    } >"$project/CMakeLists.txt"
    cmake -S "$project" -B "$project/build" -DCMAKE_PREFIX_PATH="$prefix" \
        ${HOST_LINKER_FLAGS:+-DCMAKE_EXE_LINKER_FLAGS="$HOST_LINKER_FLAGS"} >"$project/configure.log" 2>&1 \
        || { cat "$project/configure.log"; echo "README block $(basename "$block") does not configure"; exit 1; }
    cmake --build "$project/build" >"$project/build.log" 2>&1 \
        || { cat "$project/build.log"; echo "README block $(basename "$block") does not build"; exit 1; }
    if [ -f "$project/Main.qml" ]; then
        run=$work/run
        mkdir -p "$run/config" && mkdir -p -m 700 "$run/runtime"
        XDG_CONFIG_HOME=$run/config XDG_RUNTIME_DIR=$run/runtime QT_QPA_PLATFORM=offscreen \
            QT_QUICK_BACKEND=software timeout 60 "$project/build/myapp" >"$run/out.log" 2>&1 || true
        if grep -E 'qrc:/(Main|Snippet)' "$run/out.log"; then
            echo "the README's QML blocks do not load in its Qt Quick host"
            exit 1
        fi
    fi
    built=$((built + 1))
    echo "readme-snippets: block $(basename "$block") builds"
done
[ "$built" -ge 2 ] || { echo "fewer CMake blocks than expected were built: $built"; exit 1; }
