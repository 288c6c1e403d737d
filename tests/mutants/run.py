#!/usr/bin/env python3
"""Deliberate faults, one at a time: apply, rebuild, run the module's test programs, revert.

usage: run.py TREE [ID...]      (no ID: all of mutants.txt)
TREE is a checkout with build/host (native, sanitizers) and build/win32 (MinGW) configured.
Each mutant is 'id @@ file basename @@ groups @@ search @@ replacement'; the file is found by its
basename among the tracked files, so the list works on either folder layout. Groups:
  native:PROG   build PROG in build/host, run build/host/tests/PROG
  wine:PROG     build PROG in build/win32, run it under Wine (cmake/wine-env.sh)
  robot:REGEX   build SETUP and the robot, run ctest -R REGEX in build/win32 under Wine
Result per mutant: caught (a test failed), missed (all passed), or invalid (no such text or
the build failed). One line per mutant is printed and appended to TREE/build/mutants/results.tsv,
the test output of each to TREE/build/mutants/ID.log. Not part of the test command: a whole run
takes about a quarter of an hour.
"""
import os, subprocess, sys, time

HERE = os.path.dirname(os.path.abspath(__file__))
tree = os.path.abspath(sys.argv[1])
wanted = set(sys.argv[2:])
logdir = os.path.join(tree, 'build', 'mutants')
out = os.path.join(logdir, 'results.tsv')
os.makedirs(logdir, exist_ok=True)

def run(cmd, log, **kw):
    with open(log, 'a') as f:
        f.write('$ %s\n' % cmd); f.flush()
        return subprocess.call(cmd, shell=True, cwd=tree, stdout=f, stderr=subprocess.STDOUT,
                               executable='/bin/bash', **kw)

files = subprocess.check_output(['git', 'ls-files'], cwd=tree, text=True).split()
ROBOT_TARGETS = 'setup kxrobot mkmedium korv5 config uninstal'

def one(mid, base, groups, search, repl):
    paths = [p for p in files if os.path.basename(p) == base and not p.startswith(('tests/', 'fuzz/'))]
    if len(paths) != 1:
        return 'invalid', 'file %s: %s' % (base, paths)
    path = os.path.join(tree, paths[0])
    text = open(path, encoding='utf-8').read()
    if text.count(search) != 1:
        return 'invalid', 'search text found %d times in %s' % (text.count(search), paths[0])
    log = os.path.join(logdir, mid + '.log')
    open(log, 'w').close()
    failed = []
    try:
        with open(path, 'w', encoding='utf-8') as f:
            f.write(text.replace(search, repl))
        for g in groups.split(','):
            kind, arg = g.split(':', 1)
            if kind == 'native':
                if run('cmake --build build/host -j1 --target %s' % arg, log):
                    return 'invalid', 'native build of %s failed' % arg
                if run('build/host/tests/%s --gtest_brief=1' % arg, log):
                    failed.append(g)
            elif kind == 'wine':
                if run('cmake --build build/win32 -j2 --target %s' % arg, log):
                    return 'invalid', 'win32 build of %s failed' % arg
                if run('source cmake/wine-env.sh && trap wine_env_stop EXIT && '
                       'wine_env_start "$PWD/build/win32/wine" && cd build/win32/tests && '
                       'timeout 300 wine ./%s.exe --gtest_brief=1' % arg, log):
                    failed.append(g)
            elif kind == 'robot':
                if run('cmake --build build/win32 -j2 --target %s' % ROBOT_TARGETS, log):
                    return 'invalid', 'win32 build failed'
                if run("KX_KEEP_PREFIX=1 tests/wine-ctest.sh build/win32 -R '%s'" % arg, log):
                    failed.append(g)
        return ('caught', ' '.join(failed)) if failed else ('missed', '')
    finally:
        with open(path, 'w', encoding='utf-8') as f:
            f.write(text)

for line in open(os.path.join(HERE, 'mutants.txt'), encoding='utf-8'):
    if not line.strip() or line.startswith('#'):
        continue
    mid, base, groups, search, repl = line.rstrip('\n').split(' @@ ', 4)
    if wanted and mid not in wanted:
        continue
    search = search.replace('\\n', '\n'); repl = repl.replace('\\n', '\n')
    t0 = time.time()
    verdict, note = one(mid, base, groups, search, repl)
    row = '%s\t%s\t%s\t%s\t%ds' % (mid, base, verdict, note, time.time() - t0)
    print(row, flush=True)
    with open(out, 'a') as f:
        f.write(row + '\n')
