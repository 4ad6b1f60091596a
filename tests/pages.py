#!/usr/bin/env python3
"""Makes tests of the pages of docs/.

Contract.txt, a table (tests/tables): members, signatures and types against the interface (those that
differ become lines that fail), and for each property of the reference its type, its default and what
becomes of values at the ends of its range, beyond them and elsewhere; no other one may move.

snippets/page_line.vb or .js: each snippet, below what the user does meanwhile, as in tables.

pages.py FOLDER"""
import hashlib
import pathlib
import re
import shutil
import subprocess
import sys

# Of identifiers, order, flags, types and defaults: what compiled clients rely on. When all that was
# there before is still there, and new members stand at the end of their class, put the new one here.
FINGERPRINT = 'e882fddb08f7ebb8'

ROOT = pathlib.Path(__file__).resolve().parent.parent
OUT = pathlib.Path(sys.argv[1])
TYPES = {'SHORT': 'Integer', 'LONG': 'Long', 'VARIANT_BOOL': 'Boolean', 'CURRENCY': 'Currency', 'DATE': 'Date',
         'BSTR': 'String', 'VARIANT': 'Variant', 'void': ''}
CODES = {'Integer': 2, 'Long': 3, 'Currency': 6, 'Date': 7, 'String': 8, 'Boolean': 11}
lines = []


def fault(text):
    lines.append('? "' + str(text).replace('"', "'") + '" = ""')


def script_type(name):
    return TYPES.get(name, name[1:] if name.startswith('_') else 'Long')  # an object, an enumeration


# --- The interface: class -> [(name, 'propget', 'propput' or '', type, signature, parameters)]

preprocess = ['i686-w64-mingw32-cpp-posix', '-P', '-undef', '-w', ROOT / 'src/core/quill.idl']
source = subprocess.run(preprocess, capture_output=True, text=True, check=True).stdout
source = re.sub(r',?\s*helpstring\("(\\.|[^"])*"\)', '', source)
fingerprint = hashlib.sha256(' '.join(source.split()).encode()).hexdigest()[:16]
if fingerprint != FINGERPRINT:
    fault(f'what is published has changed; its fingerprint is {fingerprint}')
published = {}
for owner, body in re.findall(r'interface _+(\w+)(?: : IDispatch)?\s*\{(.*?)\n    \}', source, re.S):
    members = published.setdefault(owner, [])
    for flags, name, given in re.findall(r'\[([^]]*)\]\s*(?:HRESULT|void) (\w+)\((.*?)\);', body, re.S):
        text, end, result, parameters = name + '(', '', '', []
        for marks, kind, argument in re.findall(r'\[((?:[^]"]|"[^"]*")*)\] (\w+) \**(\w+)', given):
            argument = 'default' if argument == 'Default' else argument
            kind = script_type(kind)
            if 'retval' in marks:
                result = kind
                continue
            text += '' if text.endswith('(') else ' ' if 'optional' in marks else ', '
            if 'optional' in marks:
                text += '[' if text.endswith('(') else '[, '
                end += ']'
            text += argument
            if initial := re.search(r'defaultvalue\((.*?)\)', marks):
                word = {'0': 'False', '-1': 'True'}[initial[1]] if kind == 'Boolean' else initial[1]
                text += ' = ' + word
            parameters.append((argument, kind))
        access = flags.split(',')[0] if flags.startswith('prop') else ''
        members.append((name, access, result or parameters[0][1] if access else result,
                        f'{text}{end})`' + (f' → {result}' if result else ''), parameters))

# --- The pages: rows of properties by class (or '' for what classes share) and name

rows = {}
shutil.rmtree(OUT / 'snippets', ignore_errors=True)
(OUT / 'snippets').mkdir()
for page in sorted((ROOT / 'docs').glob('*.md')):
    text = page.read_text()
    title = text.split('\n')[0]
    classes = re.findall(r'Quill\.(\w+)', title) or re.findall(r'^# (BinFile)$', title) or ['']
    methods = dict(re.findall(r'^### `(\w+\(.*)\n((?:(?!### `).*\n)*)', text, re.M))
    wanted = [member for owner in classes for member in published.get(owner, []) if not member[1]]
    for signature in methods.keys() - {member[3] for member in wanted}:
        fault(f'{page}: not published: {signature}')
    for _, _, _, signature, parameters in wanted:
        if signature not in methods:
            fault(f'{page}: lacks ### `{signature}')
        # "- `items` (String): the lines", or "- `first`, `second` (Long): the numbers"
        for name, kind in parameters:
            if not re.search(rf'- [^(\n]*`{name}`[^(\n]*\({kind}[,)]', methods.get(signature, '')):
                fault(f'{page}: {signature} lacks `{name}` ({kind})')
    for row in re.findall(r'^\| `(\w+)` \| (' + '|'.join(CODES) + r'|Variant) \| ([^|]*) \| ([^|]*) \| (.*) \|$',
                          text, re.M):
        for owner in classes:
            rows[owner, row[0]] = row
    for snippet in re.finditer(r'(?:^<!-- answers:((?:(?!-->).)*)-->\n)?^```(vb|js)\n(.*?)^```$', text, re.S | re.M):
        answers = [line.strip() for line in (snippet[1] or '').split('\n') if line.strip()]
        line = text[:snippet.start(3)].count('\n')
        name = f'{page.stem.replace("-", "")}_{line}.{snippet[2]}'
        (OUT / 'snippets' / name).write_text('\n'.join([f'< {answer}' for answer in answers] + [snippet[3]]))
unused = set(rows.values())


# --- Values as the script writes them

def literal(kind, initial, owner):
    if ' or ' in initial:  # two classes: "QUILL Window" or "QUILL Window2"
        initial = initial.split(' or ')[initial.endswith(f'{owner}"')]
    if kind == 'String':
        return '"' + initial.strip('`"').replace('empty', '') + '"'
    return initial


def rule(kind, accepted):
    """What a property is after `put`, when it was `before`; None where that raises the error."""
    if found := re.fullmatch(r'cut to (\d+)(, an empty text is ignored)?', accepted):
        limit = int(found[1])
        return [limit, limit + 1, 0], lambda old, put: old if found[2] and not put else min(put, limit), ''
    if kind in ('String', 'Variant'):
        return [70_000, 0], lambda old, put: put, ''
    ranges, others, error = [], accepted, ''
    if found := re.fullmatch(r'(sum of )?(.*), others (raise 0x(\w+)|.*)', accepted):
        others, error = found[3], found[4] or ''
        for low, high, stored in re.findall(r'(-?\d+)(?: to (-?\d+))?(?: as (\d+))?', found[2]):
            ranges.append((int(low), int(high or low), int(stored) if stored else None))
    bits = sum(low for low, _, _ in ranges)

    def after(old, put):
        for low, high, stored in ranges:
            if low <= put <= high and 'sum of' not in accepted:
                return put if stored is None else stored
        return {'any': put, 'any, always resets': 0, 'are ignored': old, 'store 0': 0, 'are cut to 24 bits':
                put & 0xFFFFFF, 'become the nearest': max(min(put, ranges[0][1]), ranges[0][0]) if ranges else 0,
                'are dropped': put & bits, f'raise 0x{error}': None}[others]

    low, high = {'Integer': (-2**15, 2**15 - 1), 'Boolean': (-1, 0), 'Currency': (-2**40, 2**49),
                 'Date': (0, 2**15)}.get(kind, (-2**31, 2**31 - 1))
    tried = [0, 1, -1, 2**15 - 1, -2**15, 2**31 - 1, -2**31]
    for first, last, _ in ranges:
        tried = [first, last, last + 1, first - 1] + tried
    return [value for value in tried if low <= value <= high], after, error


def row_of(owner, name):
    return rows.get((owner, name)) or rows.get(('', name))


def try_property(owner, name, others):
    """Lines that put values into `one`, a new object, and look at them and at all others."""
    _, kind, initial, accepted, _ = row_of(owner, name)
    lines.append(f'Set one = Fresh("{owner}")')
    lines.append(f'others = "{others}" : before = Shot(one, others)')
    check = ' And Shot(one, others) = before'
    if kind == 'Variant':
        lines.append(f'one.{name} = Array("one", "two")')
        lines.append(f'? Items(one.{name}) = "one|two|"{check}')
    if accepted.startswith('an array or Empty'):
        lines.append(f'one.{name} = "no array"')
        lines.append(f'? Items(one.{name}) = "one|two|"{check}')
        lines.append(f'one.{name} = Empty')
        lines.append(f'? TypeOf(one.{name}) = 0{check}')
        return
    if accepted.startswith('an existing path'):
        lines.append(f'one.{name} = "C:\\windows"')
        lines.append(f'! one.{name} = "gone" -> {accepted.split("0x")[1]}')
        lines.append(f'? one.{name} = "C:\\windows"{check}')
        return
    text = kind in ('String', 'Variant')
    old = None  # what it is at first is not known in every case
    samples, after, error = rule(kind, accepted)
    for put in samples:
        kept = after(old, put)
        value = f'String({put}, "x")' if text else str(bool(put)) if kind == 'Boolean' else str(put)
        if kept is None and error:
            lines.append(f'! one.{name} = {value} -> {error}')
            kept = old
        else:
            lines.append(f'one.{name} = {value}')
        if kept is None:
            expected = literal(kind, initial, owner)
        else:
            expected = f'String({kept}, "x")' if text else str(bool(kept)) if kind == 'Boolean' else str(kept)
            old = kept
        lines.append(f'? one.{name} = {expected}{check}')


lines += ['Function Fresh(name)', '  If name <> "BinFile" Then Set Fresh = Make(name) _',
          '  Else Set one = Nothing : Write "data", "" : Set Fresh = File.OpenBinary(folder & "data")', 'End Function']
for owner, members in published.items():
    steady = []  # what does not change by itself
    lines.append(f'Set one = Fresh("{owner}")')
    for name, access, kind, _, _ in members:
        row = row_of(owner, name)
        if not access or row is None:
            if access:
                fault(f'no page has a row for {owner}.{name}')
            continue
        unused.discard(row)
        puts = any(member[:2] == (name, 'propput') for member in members)
        if access == 'propget':
            if row[1] != kind or (row[3] == 'read-only') == puts:
                fault(f'{owner}.{name} is a {kind}, not: {row}')
            if row[1] in CODES:
                lines.append(f'? TypeOf(one.{name}) = {CODES[row[1]]}')
            if row[2] == '—':
                continue
            steady.append(name)
            lines.append(f'? TypeOf(one.{name}) = 0' if row[2] == 'Empty' else
                         f'? Items(one.{name}) = ""' if row[2] == 'empty array' else
                         f'? one.{name} = {literal(kind, row[2], owner)}')
    for name, access, *_ in members:
        if access == 'propput' and row_of(owner, name):
            others = [other for other in steady if other != name and
                      f'`{other}`' not in row_of(owner, name)[4] and f'`{name}`' not in row_of(owner, other)[4]]
            try_property(owner, name, ' '.join(others))
for row in unused:
    fault(f'not published: {row}')
(OUT / 'Contract.txt').write_text('\n'.join(lines + ['end', '']))
