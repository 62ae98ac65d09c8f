#!/usr/bin/env python3
"""comma_locale.py FOLDER PROGRAM [TEST_PROGRAM...]: nothing that is read, printed or saved follows the user's locale.

Makes a locale with a decimal comma in FOLDER, runs one session with and without it, and compares transcript and files
to the byte; then runs the test programs under it. Exit status 77: skipped, with a line that says why."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

NAME = "de_DE.UTF-8"

LINES = r"""
(+ 1.5 1.5)
(list 0.1 -2.25 1e-7 1.0e21 (/ 1.0 3))
(command "LINE" (list 0.5 0.5) (list 1.5 2.5) "")
(list (rtos 3.14159 2 3) (rtos 1500.5 1 2) (rtos 18.75 3 3) (rtos 18.75 4 4) (rtos 2.75 5 3) (angtos 0.7854 0 3))
(list (atof "2.75mm") (read "6.25") (distof "1.5") (angtof "45.5" 0))
(entget (entlast))
(setvar "LTSCALE" 2.5)
LTSCALE 1.75
LIST L ;
CIRCLE 10.25,20.75 3.125
TEXT 0,5 2.5 12.5 half
DIMLINEAR 0,0 12.34,0 6,3.5
DIMRADIUS 13.375,20.75 15.5,22.5
LIST L ;
DIST 0,0 1.25,2.5
ID 1.125,2.25
CAL 1.5*2.25
-HATCH P ANSI31 1.5 22.5 S L ;;
UNITS 1 3 1 2 0 N
ID 1.125,2.25
SVGEXPORT out.svg E
"""


def session(program, folder, environment):
    """Transcript and files of a session in an empty folder."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    words = [program, "run"]
    for line in LINES.strip().splitlines():
        if line.startswith("("):
            words += ["-c", line]
        else:
            for word in line.split(" "):
                for piece in re.split("(;)", word):
                    words += ["-c", piece] if piece else []
    out = {}
    for extension in ("dxf", "kvcad", "dwg"):
        done = subprocess.run(words + ["--save", f"out.{extension}"], cwd=folder, env=environment, capture_output=True)
        out[f"transcript with {extension}"] = done.stdout + done.stderr
    # A file that was written under one locale is read under the other by the caller's second run.
    again = subprocess.run([program, "run", "--open", "out.dxf", "-c", "LIST", "-c", "ALL", "-c", ";", "--save", "again.dxf"],
                           cwd=folder, env=environment, capture_output=True)
    out["listing of out.dxf"] = again.stdout + again.stderr
    for file in sorted(folder.iterdir()):
        if file.suffix != ".dwg":
            out[file.name] = file.read_bytes()
    return out


def comparable(data):
    """Without what tells the time and the machine's ids of a run."""
    text = data.decode("utf-8", "replace")
    text = re.sub(r"\d{4}-\d\d-\d\d[T ][\d:.]+Z?", "TIME", text)
    text = re.sub(r"\b24\d{5}\.\d+", "DATE", text)  # Julian
    text = re.sub(r"\b\d\.\d{9,}e-0\d\b", "DURATION", text)  # in days
    text = re.sub(r"\{?[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\}?", "GUID", text)
    return re.sub(r'("?TD\w+"?\s*[:=]\s*)[\d.]+', r"\1TIME", text)


def main():
    folder, program, *tests = sys.argv[1:]
    folder, program = pathlib.Path(folder).resolve(), os.path.abspath(program)
    tests = [os.path.abspath(test) if "/" in test else test for test in tests]
    locales = folder / "locales"
    locales.mkdir(parents=True, exist_ok=True)
    if shutil.which("localedef") is None:
        print("SKIPPED: localedef is not installed")
        return 77
    made = subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", str(locales / NAME)], capture_output=True, text=True)
    if not (locales / NAME / "LC_NUMERIC").exists():
        print("SKIPPED: localedef made no locale:", made.stderr.strip()[-200:])
        return 77
    base = {k: v for k, v in os.environ.items() if not k.startswith("LC_") and k not in ("LANG", "LANGUAGE")}
    base["QT_QPA_PLATFORM"] = "offscreen"
    comma = dict(base, LOCPATH=str(locales), LC_ALL=NAME, LANG=NAME)
    point = subprocess.run(["locale", "-k", "decimal_point"], env=comma, capture_output=True, text=True).stdout
    if 'decimal_point=","' not in point:
        print("SKIPPED: the locale has no decimal comma here:", point.strip())
        return 77

    wanted = session(program, folder / "session", dict(base, LC_ALL="C.UTF-8"))
    found = session(program, folder / "session", comma)
    failures = [f"{name} is missing" for name in wanted.keys() - found.keys()]
    for name in sorted(wanted.keys() & found.keys()):
        a, b = comparable(wanted[name]).splitlines(), comparable(found[name]).splitlines()
        for number, (x, y) in enumerate(zip(a, b), 1):
            if x != y:
                failures.append(f"{name}:{number}: {x!r} became {y!r}")
                break
        else:
            if len(a) != len(b):
                failures.append(f"{name}: {len(a)} lines became {len(b)}")
    text = wanted["transcript with dxf"].decode()
    for sign in ("3.0", "(0.1 -2.25", "12.34", '"3.142"', "2.75 6.25 1.5"):
        if sign not in text:
            failures.append(f"the session does not show {sign}")
    for test in tests:
        words = test.split(":")
        done = subprocess.run([words[0], "--gtest_brief=1"] + ["--gtest_filter=" + ":".join(words[1:])] * (len(words) > 1),
                              env=comma, capture_output=True, text=True)
        if done.returncode != 0:
            failures.append(f"{words[0]} under a decimal comma:\n" + (done.stdout + done.stderr)[-3000:])
    print("\n".join(failures) or f"{len(wanted)} outputs and {len(tests)} test programs are the same under a decimal comma")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
