#!/usr/bin/env python3
# Makes tests of the pages of docs/.
#
# Contract.txt, a table (tests/tables): members, signatures and types against the interface (those that
# differ become lines that fail), and for each property of the reference its type, its default and what
# becomes of values at the ends of its range, beyond them and elsewhere; no other one may move.
#
# Snippets.txt, a table that runs each snippet, in snippets/page_line.vb or .js, and what the user does
# meanwhile.
#
# pages.py FOLDER
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
snippets = []


def fault(text):
    lines.append('? "' + str(text).replace('"', "'") + '" = ""')


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
        signature, optional, result, parameters = name + '(', 0, '', []
        for marks, kind, argument in re.findall(r'\[((?:[^]"]|"[^"]*")*)\] (\w+) \**(\w+)', given):
            argument = 'default' if argument == 'Default' else argument
            kind = TYPES.get(kind, kind[1:] if kind.startswith('_') else 'Long')  # an object, an enumeration
            if 'retval' in marks:
                result = kind
                continue
            comma = ', ' if parameters else ''
            signature += (' [' if parameters else '[') + comma + argument if 'optional' in marks else comma + argument
            optional += 'optional' in marks
            if initial := re.search(r'defaultvalue\((.*?)\)', marks):
                signature += ' = ' + (initial[1] if kind != 'Boolean' else str(initial[1] != '0'))
            parameters.append((argument, kind))
        access = flags.split(',')[0] if flags.startswith('prop') else ''
        members.append((name, access, result or parameters[0][1] if access else result,
                        signature + ']' * optional + ')`' + (f' → {result}' if result else ''), parameters))

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
        answers = re.sub(r'^ *(\S)', r'< \1', (snippet[1] or '').strip(), flags=re.M)
        line = text[:snippet.start(3)].count('\n')
        name = f'{page.stem.replace("-", "")}_{line}.{snippet[2]}'
        (OUT / 'snippets' / name).write_text(snippet[3])
        snippets += [answers, f'? Snippet("{name}") = ""']
unused = set(rows.values())


# --- Values as the script writes them

def literal(kind, value):
    if kind in ('String', 'Variant'):
        return f'String({value}, "x")'
    return bool(value) if kind == 'Boolean' else value


def initially(row, owner):
    text = row[2]
    if ' or ' in text:  # two classes: "QUILL Window" or "QUILL Window2"
        text = text.split(' or ')[text.endswith(f'{owner}"')]
    return '"' + text.strip('`"').replace('empty', '') + '"' if row[1] == 'String' else text


# Values to put, and what the property is after `put` when it was `old`; None stands for the error.
def rule(kind, accepted):
    if found := re.fullmatch(r'cut to (\d+)(, an empty text is ignored)?', accepted):
        limit = int(found[1])
        return [limit, limit + 1, 0], lambda old, put: old if found[2] and not put else min(put, limit)
    if kind in ('String', 'Variant'):
        return [70_000, 0], lambda old, put: put
    found = re.fullmatch(r'(sum of )?(.*), others (.*)', accepted)
    others = (found[3] if found else accepted).split(' 0x')[0]
    ranges = [(int(low), int(high or low), stored) for low, high, stored in
              re.findall(r'(-?\d+)(?: to (-?\d+))?(?: as (\d+))?', found[2] if found else '')]
    bits = sum(low for low, _, _ in ranges)

    def after(old, put):
        for low, high, stored in ranges:
            if low <= put <= high and not found[1]:
                return int(stored or put)
        nearest = ranges and sorted((put, *ranges[0][:2]))[1]
        return {'any': put, 'any, always resets': 0, 'are ignored': old, 'store 0': 0, 'are dropped': put & bits,
                'are cut to 24 bits': put & 0xFFFFFF, 'become the nearest': nearest, 'raise': None}[others]

    low, high = {'Integer': (-2**15, 2**15 - 1), 'Boolean': (-1, 0), 'Currency': (-2**40, 2**49),
                 'Date': (0, 2**15)}.get(kind, (-2**31, 2**31 - 1))
    tried = [0, 1, -1, 2**15 - 1, -2**15, 2**31 - 1, -2**31]
    for first, last, _ in ranges:
        tried = [first, last, last + 1, first - 1] + tried
    return [value for value in tried if low <= value <= high], after


def row_of(owner, name):
    return rows.get((owner, name)) or rows.get(('', name)) or sys.exit(f'no page has a row for {owner}.{name}')


# Lines that put values into `one`, a new object, and look at them and at all others.
def try_property(owner, name, others):
    _, kind, _, accepted, _ = row = row_of(owner, name)
    error = accepted.partition('0x')[2]

    def put(value, expected, raises=False):
        lines.append(f'! one.{name} = {value} -> {error}' if raises else f'one.{name} = {value}')
        lines.append(f'? {expected} And Shot(one, others) = before')

    lines.append(f'Set one = Fresh("{owner}")')
    lines.append(f'others = "{others}" : before = Shot(one, others)')
    if kind == 'Variant':
        put('Array("one", "two")', f'Items(one.{name}) = "one|two|"')
    if accepted.startswith('an array or Empty'):
        put('"no array"', f'Items(one.{name}) = "one|two|"')
        return put('Empty', f'TypeOf(one.{name}) = 0')
    if accepted.startswith('an existing path'):
        put('"C:\\windows"', f'one.{name} = "C:\\windows"')
        return put('"gone"', f'one.{name} = "C:\\windows"', raises=True)
    old = None  # what it is at first is not known in every case
    samples, after = rule(kind, accepted)
    for value in samples:
        kept = after(old, value)
        old = old if kept is None else kept
        expected = initially(row, owner) if old is None else literal(kind, old)
        put(literal(kind, value), f'one.{name} = {expected}', kept is None)


lines += ['Function Fresh(name)', '  If name <> "BinFile" Then Set Fresh = Make(name) _',
          '  Else Set one = Nothing : Write "data", "" : Set Fresh = File.OpenBinary(folder & "data")', 'End Function']
for owner, members in published.items():
    steady = []  # what does not change by itself
    puts = [name for name, access, *_ in members if access == 'propput']
    lines.append(f'Set one = Fresh("{owner}")')
    for name, kind in [(name, kind) for name, access, kind, *_ in members if access == 'propget']:
        row = row_of(owner, name)
        unused.discard(row)
        if row[1] != kind or (row[3] == 'read-only') == (name in puts):
            fault(f'{owner}.{name} is a {kind}, not: {row}')
        if kind in CODES:
            lines.append(f'? TypeOf(one.{name}) = {CODES[kind]}')
        if row[2] != '—':
            steady.append(name)
            lines.append(f'? TypeOf(one.{name}) = 0' if row[2] == 'Empty' else
                         f'? Items(one.{name}) = ""' if row[2] == 'empty array' else
                         f'? one.{name} = {initially(row, owner)}')
    for name in puts:
        try_property(owner, name, ' '.join(
            other for other in steady if other != name and
            f'`{other}`' not in row_of(owner, name)[4] and f'`{name}`' not in row_of(owner, other)[4]))
for row in unused:
    fault(f'not published: {row}')
for name, table in ('Contract', lines), ('Snippets', snippets):
    (OUT / f'{name}.txt').write_text('\n'.join(table + ['end', '']))
