#!/usr/bin/env python3
"""Checks the direction of the includes between Tarnby's folders.

A folder of the program is a subsystem folder below src/ (src/core/catalogue,
src/ui/frame, src/core/platform/imaging, src/cli, ...). The rules:

  * the core (src/core) includes nothing of the windows (src/ui);
  * the narrow interfaces (src/core/platform/...) include nothing of the core
    outside src/core/platform;
  * the command-line tool (src/cli) includes nothing of the windows;
  * no two folders include each other, directly or through others.

Every include that names a library header ("core/...", "ui/...") is read; an
include with no folder is a header of the same folder. Prints one line per
fault and exits 1 when there is any, 0 when the tree is clean.

    python3 scripts/check-includes.py [REPO]
"""
import os
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.M)


def folder_of(path):
    """'src/core/platform/imaging/codecs/X.h' -> 'core/platform/imaging';
    'src/ui/frame/ChildFrm1.cpp' -> 'ui/frame'; 'src/cli/main.cpp' -> 'cli'."""
    parts = path.split('/')[1:-1]  # drop "src" and the file name
    if not parts:
        return None
    if parts[0] in ('core', 'ui'):
        if len(parts) == 1:
            return parts[0]
        if parts[0] == 'core' and parts[1] == 'platform' and len(parts) > 2:
            return '/'.join(parts[:3])
        return '/'.join(parts[:2])
    return parts[0]


def upward(src, dst):
    """The reason an include from folder src of folder dst runs the wrong way, or None."""
    if src.startswith('core') and dst.startswith('ui'):
        return 'the core includes a window'
    if src.startswith('core/platform') and not dst.startswith('core/platform'):
        return 'a platform interface includes the core above it'
    if src == 'cli' and dst.startswith('ui'):
        return 'the command-line tool includes a window'
    if dst in ('cli', 'app'):
        return 'a library includes a program'
    return None


def find_cycles(graph):
    """The strongly connected components with more than one folder (Tarjan)."""
    index, low, stack, on_stack, result = {}, {}, [], set(), []
    counter = [0]

    def visit(v):
        index[v] = low[v] = counter[0]
        counter[0] += 1
        stack.append(v)
        on_stack.add(v)
        for w in sorted(graph.get(v, ())):
            if w not in index:
                visit(w)
                low[v] = min(low[v], low[w])
            elif w in on_stack:
                low[v] = min(low[v], index[w])
        if low[v] == index[v]:
            component = []
            while True:
                w = stack.pop()
                on_stack.discard(w)
                component.append(w)
                if w == v:
                    break
            if len(component) > 1:
                result.append(sorted(component))

    for v in sorted(graph):
        if v not in index:
            visit(v)
    return result


def main():
    repo = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), '..')
    os.chdir(repo)
    faults = []
    graph = {}
    witness = {}
    for root, _dirs, files in os.walk('src'):
        for name in sorted(files):
            if not name.endswith(('.h', '.cpp')):
                continue
            path = os.path.join(root, name)
            src = folder_of(path)
            with open(path, encoding='utf-8') as f:
                text = f.read()
            for inc in INCLUDE.findall(text):
                if not inc.startswith(('core/', 'ui/')):
                    if '/' in inc and not inc.endswith('.moc'):
                        faults.append(f'{path}: "{inc}" does not name its library (core/ or ui/)')
                    continue
                target = 'src/' + inc
                if not os.path.exists(target):
                    faults.append(f'{path}: "{inc}" names no file')
                    continue
                dst = folder_of(target)
                if dst == src:
                    continue
                why = upward(src, dst)
                if why:
                    faults.append(f'{path}: "{inc}": {why}')
                graph.setdefault(src, set()).add(dst)
                witness.setdefault((src, dst), path)
    for component in find_cycles(graph):
        members = set(component)
        links = [f'{a} -> {b} ({witness[(a, b)]})'
                 for a in component for b in sorted(graph.get(a, ())) if b in members]
        faults.append('folders include each other: ' + '; '.join(links))
    for fault in faults:
        print(fault)
    if faults:
        print(f'{len(faults)} include fault(s)')
        return 1
    print('includes: no upward include, no circle')
    return 0


if __name__ == '__main__':
    sys.exit(main())
