# SPDX-License-Identifier: MIT
"""What try-faults and try-desktop-faults have in common."""
import os
import pathlib
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
ENVIRONMENT = dict(os.environ, QT_QPA_PLATFORM="offscreen")


def run(*command, **options):
    return subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=ENVIRONMENT,
                          **options).returncode


def copy_tree(source, copy):
    """A file that is the same already keeps its time, so that what comes of it is not made again."""
    copy.mkdir(exist_ok=True)
    apart = {"build", ".git"} if source == ROOT else set()
    names = {one.name for one in source.iterdir()} - apart
    for gone in {one.name for one in copy.iterdir()} - names - apart:
        (shutil.rmtree if (copy / gone).is_dir() else os.remove)(copy / gone)
    for name in names:
        one, target = source / name, copy / name
        if one.is_dir():
            copy_tree(one, target)
        elif not target.exists() or one.read_bytes() != target.read_bytes():
            shutil.copy(one, target)


def try_faults(faults, usage, room, copy, tests, configure, build, leaving_out=None):
    """A fault is its name, where it is, what stands there, and what stands there instead."""
    wanted = sys.argv[1:]
    if any(one.startswith("-") for one in wanted):
        sys.exit(usage)
    tried = [fault for fault in faults if not wanted or any(fault[0].startswith(one) for one in wanted)]
    if not tried:
        sys.exit("no fault has a name that begins so")
    for name, path, old, _ in tried:
        if old not in (ROOT / room / path).read_text():
            sys.exit(f"{name}: {path} has no longer {old!r}")
    copy = ROOT / "build" / "darwin" / copy
    folder = copy / build
    begin = time.monotonic()
    copy.mkdir(parents=True, exist_ok=True)
    copy_tree(ROOT, copy)
    if run("cmake", *configure, cwd=copy):
        sys.exit("the copy cannot be configured")

    def builds():
        return run("cmake", "--build", folder, "--target", *tests) == 0

    def fails():
        options = ["--gtest_fail_fast"] + ([f"--gtest_filter=-{leaving_out}"] if leaving_out else [])
        try:
            return any(run(folder / "tests" / "unit" / one, *options, timeout=300) != 0 for one in tests)
        except subprocess.TimeoutExpired:
            return True

    if not builds() or fails():
        sys.exit("the tests fail without any fault")
    print(f"without a fault: {time.monotonic() - begin:.0f} s", flush=True)
    counts = {"by a test": 0, "by the compiler": 0, None: 0}
    for name, path, old, new in tried:
        one = time.monotonic()
        target = copy / room / path
        text = target.read_text()
        target.write_text(text.replace(old, new))
        found = "by the compiler" if not builds() else "by a test" if fails() else None
        target.write_text(text)
        counts[found] += 1
        print(f"{name}: {'found ' + found if found else 'NOT FOUND'}, {time.monotonic() - one:.0f} s", flush=True)
    print(f"{len(tried)} faults: {counts['by a test']} found by a test, {counts['by the compiler']} by the compiler, "
          f"{counts[None]} not found; {(time.monotonic() - begin) / 60:.0f} min")
    sys.exit(counts[None] > 0)
