#!/usr/bin/env python3
"""Plants faults in a small source tree, and sees that the checks find each of them and nothing else."""

import pathlib
import sys
import tempfile

import documents
import homes
import layers
import ownership
import words

FILES = {
    "base/counter.h": """
        #pragma once
        #include <vector>
        namespace zeb {
        struct counter_state { int n = 0; std::vector<int> all; };
        extern counter_state counter;
        extern int loose;                          // ownership
        void count(int n, const char* why = "");
        void count(double n);                      // homes: in other.cpp
        void never();                              // homes: nowhere
        inline int twice(int n) { return 2 * n; }
        template <class T>
        T thrice(T n) { return 3 * n; }
        class meter {
         public:
          explicit meter(int n) : n_{n} {}
          ~meter();
          int read() const;
          int hidden() const;                      // homes: in other.cpp
         private:
          int n_;
        };
        }  // namespace zeb
        """,
    "base/counter.cpp": """
        #include "base/counter.h"
        namespace zeb {
        counter_state counter;
        int loose = 0;
        void count(int n, const char* why) { counter.n += n; (void)why; }
        meter::~meter() = default;
        int meter::read() const { return n_; }
        }  // namespace zeb
        """,
    "base/other.h": '#include "base/counter.h"\nint f();\n',
    "base/other.cpp": """
        #include "base/other.h"
        #include "trees/top.h"                     // layers: upward
        namespace zeb {
        namespace {
        const char* const fixed = "counter.n = 1;";
        const char* name = "x";                    // ownership
        struct own_state { int a = 0; } own;
        }  // namespace
        void count(double n) {
          static int calls = 0;                    // ownership
          static constexpr int most = 7;
          calls += own.a < most;
          counter.n = static_cast<int>(n);
        }
        int meter::hidden() const { return n_ > 1 ? 1 : 0; }
        int helper();                              // homes: declared in a source
        }  // namespace zeb
        int f() { return 1; }
        """,
    "base/ring.h": '#include "base/ring2.h"\n',    # layers: a circle
    "base/ring2.cpp": '#include "base/ring2.h"\n#include "base/ring.h"\n',
    "base/ring2.h": "",
    "trees/top.h": "#pragma once\nnamespace zeb { void top_command(); }\n",  # homes: belongs in commands.h
    "trees/top.cpp": """
        #include "trees/top.h"
        #include "base/counter.h"
        namespace zeb {
        int read(const counter_state& counter) { return counter.n == 3; }
        void set(counter_state* c) { counter_state counter; counter.n = 1; c->n = counter.n; }
        void top_command() {
          ++counter.n;                             // ownership
          counter.all.push_back(1);                // ownership
          if (counter.n == 2 || counter.all.size() == 1) return;
          counter.all[counter.n] = 5;              // ownership
          int& n = counter.n;                      // ownership
          const int& seen = counter.n;
          n = seen;
        }
        }  // namespace zeb
        """,
}
PROSE = {
    "a.cpp": '// Kluge 1999 and\n// Fitch 1971; Farris 1970: what stands behind it.\nint behind; const char* s = "TODO";\n',
    "CMakeLists.txt": "",
    "src/a.cpp": "int known_word;\n",
    "README.md": "`gone.cpp` and `a.cpp`, `no_such_word`, `known_word`\n",
}


def plant(folder, files):
    for name, text in files.items():
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")


def expect(check, found, wanted):
    """Each wanted text is in one fault, and there are no others."""
    found = list(found)
    missing = [text for text in wanted if not any(text in fault for fault in found)]
    for text in missing:
        print(f"{check}: not found: {text}")
    if len(found) != len(wanted):
        print(f"{check}: {len(found)} faults where {len(wanted)} were planted:", *found, sep="\n  ")
    return not missing and len(found) == len(wanted)


def main():
    with tempfile.TemporaryDirectory() as name:
        src, prose = pathlib.Path(name) / "src", pathlib.Path(name) / "prose"
        plant(src, FILES)
        plant(prose, PROSE)
        well = [
            expect("layers", layers.faults(src), [
                "base/other.cpp:3: floor 0 includes", "base/ring.h:1: circle", "base/ring2.cpp:2: circle"]),
            expect("homes", homes.faults(src), [
                "base/counter.h:9: count is defined in base/other.cpp",
                "base/counter.h:10: never is declared here and defined nowhere",
                "base/counter.h:19: meter::hidden is defined in base/other.cpp",
                "base/other.cpp:17: helper is declared in a source",
                "trees/top.h:2: the handler top_command"]),
            expect("ownership", ownership.faults(src), [
                "base/counter.h:7: loose", "base/other.cpp:7: name",
                "base/other.cpp:11: calls", "trees/top.cpp:8: writes counter", "trees/top.cpp:9: writes counter",
                "trees/top.cpp:11: writes counter", "trees/top.cpp:12: writes counter"]),
            expect("words", words.faults(prose), ['"Kluge 1999"', '"behind"', '"TODO"']),
            expect("documents", documents.faults(prose), ["there is no gone.cpp", "the word no_such_word"]),
        ]
    print("the checks find what was planted" if all(well) else "a check doesn't do its work")
    return 0 if all(well) else 1


if __name__ == "__main__":
    sys.exit(main())
