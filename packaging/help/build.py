#!/usr/bin/env python3
"""build.py MEMBERS OUTPUT: makes the documentation from docs/*.md, CHANGELOG.md and
examples/.

Leaves OUTPUT/html (web pages with search) and OUTPUT/quill.chm (the help file). MEMBERS is what the
program `members` printed: the contents, the index and the contexts of the help come from it.

A page's place in the contents is where docs/README.md first links to it; a heading of the second
level there begins a group. The place of a member is where the page of its class (a page
names its classes in its title) shows its name as code: a heading, else the first cell of a table row,
else anything; for what classes share, the same on a page without a class.

Every link, picture and context is checked, and that a snippet shows each member; what is wrong is
printed, and the exit code is 1 then.
"""
import html
import json
import os
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ET
from dataclasses import dataclass, field
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
VERSION = (ROOT / 'VERSION').read_text().strip()
EXAMPLES = ROOT / 'examples'
HEADINGS = ('h1', 'h2', 'h3', 'h4', 'h5', 'h6')


@dataclass
class Member:
    owner: str  # the class
    name: str  # empty: the class itself
    kind: str
    context: int
    help: str
    id: str = ''  # of a class that clients can create
    target: str = ''  # page and place

    @property
    def title(self):
        return f'{self.owner}.{self.name}' if self.name else self.owner


@dataclass
class Page:
    source: Path
    file: str  # in the output
    title: str
    body: ET.Element
    classes: list = field(default_factory=list)
    places: dict = field(default_factory=dict)  # member name: place on this page
    ids: set = field(default_factory=set)


problems = []


def problem(text):
    problems.append(text)


def text_of(element):
    return ''.join(element.itertext())


def output_name(source):
    if source.parent == EXAMPLES:
        return f'example-{source.name}.html'
    return 'index.html' if source.name == 'README.md' else source.stem.lower() + '.html'


def body_of(markdown, source):
    made = subprocess.run(['cmark-gfm', '-e', 'table'],
                          input=markdown, capture_output=True, text=True, check=True).stdout
    try:
        return ET.fromstring(f'<main>{made}</main>')
    except ET.ParseError as error:
        sys.exit(f'{source}: not well-formed as a page (raw HTML?): {error}')


def read_members(path):
    members = []
    for line in Path(path).read_text(encoding='utf-8').splitlines():
        kind, owner, *rest = line.split('\t')
        name = '' if kind == 'class' else rest.pop(0)
        members.append(Member(owner, name, kind, int(rest[0]), *rest[1:]))
    if not members:
        sys.exit(f'{path}: no members')
    return members


def slug(text, used):
    """The place that a heading gets on the well-known hosts of Markdown."""
    base = re.sub(r'[^\w\- ]', '', text.lower()).replace(' ', '-')
    name, count = base, 0
    while name in used:
        count += 1
        name = f'{base}-{count}'
    used.add(name)
    return name


def mark_places(page, names):
    """Gives every heading a place, and every member that is shown as code: in a heading, else in the
    first cell of a row, else anywhere."""
    for element in page.body.iter():
        if element.tag in HEADINGS:
            element.set('id', slug(text_of(element), page.ids))
    headings = [element for element in page.body.iter() if element.tag in HEADINGS]
    first_cells = [row.find('td') for row in page.body.iter('tr') if row.find('td') is not None]
    for part in headings + first_cells + [page.body]:
        for code in part.iter('code'):
            name = re.match(r'\w*', text_of(code)).group()
            if name in names and name not in page.places and 'id' not in code.attrib:
                page.places[name] = f'm-{name}'
                page.ids.add(f'm-{name}')
                code.set('id', f'm-{name}')


def read_pages(members):
    classes = {member.owner for member in members}
    names = {member.name for member in members if member.name}
    pages = {}
    for source in sorted((ROOT / 'docs').glob('*.md')) + [ROOT / 'CHANGELOG.md']:
        body = body_of(source.read_text(encoding='utf-8').replace('@VERSION@', VERSION), source)
        first = body.find('h1')
        if first is None:
            sys.exit(f'{source}: no title')
        page = Page(source, output_name(source), text_of(first), body)
        page.classes = [word for word in re.findall(r'\w+', page.title) if word in classes]
        # "File" is a class, and a word: such a title says "Quill.File".
        if len(page.classes) > 1 or 'Quill' in page.title:
            page.classes = [name for name in page.classes if f'Quill.{name}' in page.title]
        mark_places(page, names)
        pages[source] = page
    for source in sorted(EXAMPLES.iterdir()):
        main = ET.Element('main')
        ET.SubElement(main, 'h1').text = source.name
        code = ET.SubElement(ET.SubElement(main, 'pre'), 'code')
        code.text = source.read_text(encoding='utf-8')
        pages[source] = Page(source, output_name(source), source.name, main)
    return pages


def place_members(members, pages):
    home = {name: page for page in pages.values() for name in page.classes}
    shared = [page for page in pages.values() if page.source.suffix == '.md' and not page.classes]
    for member in members:
        page = home.get(member.owner)
        if not member.help:
            problem(f'{member.title}: no help text in the type library')
        if page is None:
            problem(f'{member.owner}: no page in docs/ has this class in its title')
            continue
        member.target = page.file
        if not member.name:
            continue
        for candidate in [page] + shared:
            if member.name in candidate.places:
                member.target = f'{candidate.file}#{candidate.places[member.name]}'
                break
        else:
            problem(f'{page.source.name}: nothing about {member.title}')


def snippets_of(page):
    """The VBScript snippets of a page, which the tests run."""
    return '\n'.join(code.text for code in page.body.iter('code')
                     if code.get('class') == 'language-vb')


def check_snippets(members, pages):
    """Every member is in a snippet of its class's page; what classes share, in one of any page without a
    class."""
    shared = '\n'.join(snippets_of(page) for page in pages.values() if not page.classes)
    own = {name: snippets_of(page) for page in pages.values() for name in page.classes}
    for member in members:
        if member.name and not re.search(rf'[._]{member.name}\b', own.get(member.owner, '') + shared,
                                         re.IGNORECASE):
            problem(f'{member.title}: no VBScript snippet has it')


def check_identifiers(members, pages):
    """Who lists allowed classes needs all identifiers."""
    listed = text_of(pages[ROOT / 'docs' / 'deployment.md'].body)
    for member in members:
        if member.id and member.id not in listed:
            problem(f'deployment.md: the identifier of {member.title}, {member.id}, is missing')


def groups_of(pages):
    """Groups of pages in the order of docs/README.md."""
    readme = pages[ROOT / 'docs' / 'README.md']
    groups, seen = [('', [])], {readme.file}
    by_source = {page.source: page for page in pages.values()}
    for element in readme.body.iter():
        if element.tag == 'h2':
            groups.append((text_of(element), []))
        if element.tag != 'a':
            continue
        target = (readme.source.parent / element.get('href').split('#')[0]).resolve()
        page = by_source.get(target)
        if page is None or page.file in seen or page.source.parent == EXAMPLES:
            continue
        seen.add(page.file)
        name, listed = groups[-1]
        if page.classes and not name:
            groups.append(('Classes', [page]))
        else:
            listed.append(page)
    for page in pages.values():
        if page.source.suffix == '.md' and page.file not in seen:
            problem(f'{page.source.name}: docs/README.md has no link to it')
    groups.append(('Examples', [page for page in pages.values()
                                if page.source.parent == EXAMPLES]))
    return [group for group in groups if group[1]]


def resolve_links(pages):
    """Links between sources become links between pages. What is not part of the documentation, such
    as the contributors' files, stays as text."""
    pictures = set()
    for page in pages.values():
        for parent in list(page.body.iter()):
            for element in list(parent):
                if element.tag == 'img':
                    source = (page.source.parent / element.get('src')).resolve()
                    if not source.is_file():
                        problem(f'{page.source.name}: no picture {element.get("src")}')
                    pictures.add(source)
                    element.set('src', 'images/' + source.name)
                if element.tag != 'a' or 'href' not in element.attrib:
                    continue
                href = element.get('href')
                if re.match(r'\w+:', href):
                    continue
                path, _, place = href.partition('#')
                target = (page.source.parent / path).resolve() if path else page.source
                if target == EXAMPLES:
                    target = next(p.source for p in pages.values() if p.source.parent == EXAMPLES)
                if target in pages:
                    element.set('href', pages[target].file + ('#' + place if place else ''))
                elif target.exists():
                    element.tag = 'span'
                    del element.attrib['href']
                else:
                    problem(f'{page.source.name}: no file {href}')
    return pictures


class Checker:
    """Follows every link and picture of what was written."""

    def __init__(self, folder):
        self.folder = folder
        self.places = {}

    def places_of(self, file):
        if file not in self.places:
            path = self.folder / file
            found = re.findall(r'\sid="([^"]*)"', path.read_text(encoding='utf-8')) \
                if path.is_file() and path.suffix == '.html' else []
            for name in {name for name in found if found.count(name) > 1}:
                problem(f'{file}: the place {name} is there more than once')
            self.places[file] = set(found) if path.is_file() else None
        return self.places[file]

    def target(self, owner, target):
        file, _, place = target.partition('#')
        places = self.places_of(html.unescape(file) or owner)
        if places is None:
            problem(f'{owner}: a link to {file}, which is not there')
        elif place and html.unescape(place) not in places:
            problem(f'{owner}: a link to {target}: no such place')

    def run(self):
        count = 0
        for path in sorted(self.folder.glob('*.html')):
            text = path.read_text(encoding='utf-8')
            for target in re.findall(r'\s(?:href|src)="([^"]*)"', text):
                if re.match(r'\w+:', target):
                    continue
                count += 1
                self.target(path.name, target)
        return count


def rendered(element):
    return ET.tostring(element, encoding='unicode', method='html')


def navigation(groups, current):
    lines = []
    for name, listed in groups:
        if name:
            lines.append(f'<h2>{html.escape(name)}</h2>')
        lines.append('<ul>')
        for page in listed:
            mark = ' aria-current="page"' if page is current else ''
            lines.append(f'<li><a href="{page.file}"{mark}>{html.escape(page.title)}</a></li>')
        lines.append('</ul>')
    return '\n'.join(lines)


def write_html(folder, pages, groups, search):
    for page in pages.values():
        (folder / page.file).write_text(f'''<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{html.escape(page.title)} - quill {VERSION}</title>
<link rel="stylesheet" href="style.css">
<script src="page.js"></script>
<script src="search.js"></script>
</head>
<body>
<nav>
<div class="bar"><input id="search" type="search" placeholder="Search" aria-label="Search">
<button id="theme" title="Light or dark">&#9680;</button></div>
<div id="results"></div>
<div id="contents">
<ul><li><a href="index.html">quill {VERSION}</a></li></ul>
{navigation(groups, page)}
</div>
</nav>
{rendered(page.body)}
</body>
</html>
''', encoding='utf-8')
    for name in ('style.css', 'page.js'):
        shutil.copy(HERE / name, folder)
    entries = ',\n'.join(json.dumps(entry, ensure_ascii=False) for entry in search)
    (folder / 'search.js').write_text(f'var quillSearch = [\n{entries}\n];\n', encoding='utf-8')


def search_entries(members, pages):
    entries = [{'title': member.title, 'url': member.target, 'text': member.help}
               for member in members if member.target]
    for page in pages.values():
        title, url, words = page.title, page.file, []
        for element in page.body:
            if element.tag in HEADINGS[1:]:
                entries.append({'title': title, 'url': url, 'text': ' '.join(words)})
                title, words = f'{page.title}: {text_of(element)}', []
                url = f'{page.file}#{element.get("id")}'
            else:
                words += text_of(element).split()
        entries.append({'title': title, 'url': url, 'text': ' '.join(words)})
    return entries


def sitemap(kind, items):
    """The format of contents and index: (level, title, target)."""
    lines = ['<!DOCTYPE HTML PUBLIC "-//IETF//DTD HTML//EN">', '<html><head>',
             '<meta name="GENERATOR" content="quill">', '</head><body>']
    if kind == 'contents':
        lines.append('<object type="text/site properties"></object>')
    level = -1
    for depth, title, target in items:
        lines += ['<ul>'] * (depth - level) + ['</ul>'] * (level - depth)
        level = depth
        lines.append('<li><object type="text/sitemap">'
                     f'<param name="Name" value="{html.escape(title)}">'
                     + (f'<param name="Local" value="{target}">' if target else '')
                     + '</object></li>')
    lines += ['</ul>'] * (level + 1) + ['</body></html>', '']
    return '\n'.join(lines)


def contents_of(groups, members):
    yield 0, 'quill ' + VERSION, 'index.html'
    for name, listed in groups:
        if name:
            yield 0, name, listed[0].file
        for page in listed:
            yield (1 if name else 0), page.title, page.file
            for member in members:
                if member.owner in page.classes and member.name:
                    yield (2 if name else 1), member.title, member.target


def index_of(members, pages):
    items = [(f'{member.name} ({member.owner}, {member.kind})' if member.name
              else f'{member.owner} (class)', member.target) for member in members]
    items += [(page.title, page.file) for page in pages.values() if not page.classes]
    for title, target in sorted(items, key=lambda item: item[0].lower()):
        yield 0, title, target


def contexts_of(members):
    """Help contexts of the type library: number to target. Each member has its own."""
    contexts = {}
    for member in members:
        if not member.context:
            problem(f'{member.title}: no help context')
            continue
        if member.context in contexts:
            problem(f'{member.title}: its help context {member.context} is taken')
        contexts[member.context] = member.target
    return contexts


def entry_page(folder, number, target):
    """What a help context opens, a page that leads on: the compiler knows no places within pages, and
    one context a page."""
    name = f'context-{number}.html'
    (folder / name).write_text(f'<html><head><meta http-equiv="refresh" content="0;url={target}">'
                               f'</head><body><a href="{target}">{target}</a></body></html>\n')
    return name


def write_chm(folder, output, pages, groups, members):
    for page in pages.values():
        (folder / page.file).write_text(f'''<!DOCTYPE html PUBLIC "-//W3C//DTD HTML 4.01//EN" "http://www.w3.org/TR/html4/strict.dtd">
<html>
<head>
<meta http-equiv="Content-Type" content="text/html; charset=utf-8">
<title>{html.escape(page.title)}</title>
<link rel="stylesheet" type="text/css" href="chm.css">
</head>
<body>
{rendered(page.body)}
</body>
</html>
''', encoding='utf-8')
    shutil.copy(HERE / 'chm.css', folder)
    for name, text in (('contents.hhc', sitemap('contents', contents_of(groups, members))),
                       ('index.hhk', sitemap('index', index_of(members, pages)))):
        (folder / name).write_text(text, encoding='cp1252', errors='xmlcharrefreplace')
    contexts = contexts_of(members)
    entries = {number: entry_page(folder, number, target) for number, target in contexts.items()}
    files = sorted(str(path.relative_to(folder)).replace('/', '\\') for path in folder.rglob('*')
                   if path.suffix in ('.html', '.css', '.png'))
    project = ['[OPTIONS]', 'Compatibility=1.1 or later', 'Compiled file=quill.chm', 'Binary Index=No',
               'Contents file=contents.hhc', 'Index file=index.hhk', 'Default topic=index.html',
               'Default Window=main', 'Display compile progress=No', 'Full-text search=Yes',
               'Language=0x409 English (United States)', f'Title=quill {VERSION}', '',
               '[WINDOWS]',
               f'main="quill {VERSION}","contents.hhc","index.hhk","index.html","index.html",'
               ',,,,0x63520,250,0x304e,[80,60,1080,760],,,,,,,0', '',
               '[FILES]', *files, '',
               '[ALIAS]', *(f'C{number:08}={target}' for number, target in entries.items()), '',
               '[MAP]', *(f'#define C{number:08} {number}' for number in entries), '']
    (folder / 'quill.hhp').write_text('\r\n'.join(project))
    made = subprocess.run(['chmcmd', '--no-html-scan', 'quill.hhp'], cwd=folder,
                          capture_output=True, text=True)
    chm = folder / 'quill.chm'
    if made.returncode or not chm.is_file():
        sys.exit(f'chmcmd failed:\n{made.stdout}{made.stderr}')
    check_contexts(chm, contexts)
    (output / 'quill.chm').write_bytes(without_time(chm.read_bytes()))
    return contexts


def check_contexts(chm, contexts):
    """The help file knows the contexts of the type library, and no others."""
    table = chm.with_suffix('.ivb')
    if contexts:
        subprocess.run(['chmls', 'extract', chm, '#IVB', table], capture_output=True, check=True)
    data = table.read_bytes()[4:] if contexts else b''
    known = {int.from_bytes(data[at:at + 4], 'little') for at in range(0, len(data), 8)}
    if known != set(contexts):
        problem(f'the contexts {sorted(known ^ set(contexts))} are only in the type library or only '
                'in the help file')


def without_time(chm):
    """The compiler notes the time twice. (Its binary index would hold memory that was never set, so
    the project asks for none.)"""
    chm = bytearray(chm)
    system = re.search(rb'\x0a\x00\x04\x00(....)\x09\x00..HHA Version', chm, re.DOTALL)
    for start in (16, system.start(1)):
        chm[start:start + 4] = bytes(4)
    return bytes(chm)


def main(members_file, output):
    output = Path(output)
    folders = {name: output / name for name in ('html', 'chm')}
    for folder in folders.values():
        shutil.rmtree(folder, ignore_errors=True)
        (folder / 'images').mkdir(parents=True)
    members = read_members(members_file)
    pages = read_pages(members)
    groups = groups_of(pages)
    place_members(members, pages)
    check_identifiers(members, pages)
    check_snippets(members, pages)
    pictures = resolve_links(pages)
    for folder in folders.values():
        for picture in sorted(pictures):
            if picture.is_file():
                shutil.copy(picture, folder / 'images')
    write_html(folders['html'], pages, groups, search_entries(members, pages))
    contexts = write_chm(folders['chm'], output, pages, groups, members)

    count = 0
    for folder in folders.values():
        checker = Checker(folder)
        count += checker.run()
        for member in members:
            checker.target('contents', member.target)
    for text in problems:
        print('docs:', text)
    print(f'docs: {len(pages)} pages, {len(members)} classes and members, {len(contexts)} contexts, '
          f'{count} links and pictures, {len(problems)} problems')
    return 1 if problems else 0


if __name__ == '__main__':
    os.environ['TZ'] = 'UTC'
    sys.exit(main(*sys.argv[1:]))
