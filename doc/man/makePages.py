#!/usr/bin/env python3
"""Makes the manual pages of the file formats from the Markdown pages that describe them.

    makePages.py            writes velk.lib.5 and velk.formats.5 beside this script
    makePages.py --check    compares them with what it would write; status 1 when they differ

It knows the Markdown that these pages have: headings, paragraphs, lists, tables whose first column
names what the others describe, blocks of text (those that run keep their marks as comments,
tests/example/docs.py), `code`, **names** and links. It stops at anything else."""
import pathlib
import re
import sys
import textwrap

FOLDER = pathlib.Path(__file__).resolve().parent
PAGES = {
    "velk.lib": ("library.md", "the file that names read libraries for velk"),
    "velk.formats": ("formats.md", "files that velk reads and writes"),
}
DATE = "November 23, 2026"
SECTIONS = ("Examples", "Caveats")  # of a page; all other headings are parts of its description
PAGE_OF = {source: page for page, (source, _) in PAGES.items()}
OPENING, CLOSING = "([", ".,:;)]?!"
SPAN = re.compile(r"`([^`]+)`|\*\*([^*]+)\*\*|\[([^]]+)\]\(([^)]+)\)")
BLOCK = re.compile(r"```\w+(?: ([^\n]*))?\n(.*?)^```\n", re.MULTILINE | re.DOTALL)


def macro_of(code, bold, text, target):
    """The macro that a span of Markdown becomes."""
    if bold:
        return "Sy " + bold
    if target:
        return f"Xr {PAGE_OF[target]} 5" if target in PAGE_OF else "Sx " + text
    if code in ("velk", "velk-check"):
        return f"Xr {code} 1"
    option = re.fullmatch(r"-([a-zA-Z])(?: (\S+))?", code)
    if option:
        return f"Fl {option[1]}" + (f" No {option[2]}" if option[2] else "")
    return "Ql " + (f'"{code}"' if " " in code else code)


def lines_of(text):
    """Lines of mdoc for a paragraph: sentences and spans begin new lines."""
    text = " ".join(text.split()).replace("\\", "\\e")
    made = []
    end = 0
    plain = ""
    for span in SPAN.finditer(text):
        plain += text[end:span.start()]
        before = re.search(r"(\S*)$", plain)[1]
        after = re.match(r"\S*", text[span.end():])[0]
        name, _, rest = macro_of(*span.groups()).partition(" ")
        if before.strip(OPENING) or after.strip(CLOSING):
            raise SystemExit(f"{before}{span[0]}{after}: only brackets and points may touch a span")
        made += sentences(plain.removesuffix(before))
        made.append("." + " ".join([name, *before, rest, *after]))
        end = span.end() + len(after)
        plain = ""
    return made + sentences(plain + text[end:])


def sentences(text):
    parts = re.split(r"(?<=[A-Za-z0-9)][.:]) (?=[A-Z])", text.strip())
    return [line for part in parts for line in textwrap.wrap(part, 79, break_on_hyphens=False)]


def block(mark, text):
    """A literal display; a line that begins like a request is kept from being one."""
    shown = re.sub(r"^(?=[.'])", r"\\&", text.replace("\\", "\\e"), flags=re.MULTILINE)
    comment = [f'.\\" {mark}'] if mark else []
    return [*comment, ".Bd -literal -offset indent", *shown.splitlines(), ".Ed"]


def bullets(text):
    made = [".Bl -bullet"]
    for item in re.split(r"^- ", text, flags=re.MULTILINE)[1:]:
        made += [".It", *lines_of(item)]
    return [*made, ".El"]


def table(text):
    """A list: first cell and second cell, and what further columns say in brackets."""
    head, _, *rows = [[cell.strip() for cell in row.strip("| ").split(" | ")]
                      for row in text.splitlines()]
    made = [".Bl -tag -width Ds"]
    for first, second, *others in rows:
        names = re.findall(r"`([^`]+)`", first)
        link = re.fullmatch(r"\[([^]]+)\]\(#.*\)", first)
        made.append(".It " + ("Cm " + " , ".join(names) if names else link[1] if link else first))
        further = ", ".join(f"{name.lower()}: {cell}" for name, cell in zip(head[2:], others))
        made += lines_of(second + (f" ({further})" if further else ""))
    return [*made, ".El"]


def body(markdown):
    """Lines of mdoc for all that follows the title of a page."""
    made = []
    pieces = re.split(BLOCK, markdown)
    for i, text in enumerate(pieces):
        if i % 3 == 1:
            continue
        if i % 3 == 2:
            made += block(pieces[i - 1], text)
            continue
        for part in filter(None, re.split(r"\n\n+", text.strip("\n"))):
            if part.startswith("## "):
                name = part[3:]
                made.append(f".Sh {name.upper()}" if name in SECTIONS else f".Ss {name}")
                continue
            if part.startswith("- "):
                made += bullets(part)
            elif part.startswith("|"):
                made += table(part)
            else:
                begins = not made or made[-1].startswith((".Sh", ".Ss"))
                made += ([] if begins else [".Pp"]) + lines_of(part)
    return made


def page_of(name):
    source, about = PAGES[name]
    title, _, markdown = (FOLDER.parent / source).read_text().partition("\n\n")
    if not title.startswith("# "):
        raise SystemExit(f"{source} has no title")
    others = sorted(["velk 1", "velk-check 1", *(f"{page} 5" for page in PAGES if page != name)])
    others.sort(key=lambda other: other[-1])
    see = [".Sh SEE ALSO", *(f".Xr {other} ," for other in others[:-1]), f".Xr {others[-1]}"]
    lines = body(markdown)
    place = lines.index(".Sh CAVEATS")
    lines = [f'.\\" Made by makePages.py from doc/{source}.', f".Dd {DATE}",
             f".Dt {name.upper()} 5", ".Os", ".Sh NAME", f".Nm {name}", f".Nd {about}",
             ".Sh DESCRIPTION", *lines[:place], *see, *lines[place:]]
    return "\n".join(lines) + "\n"


def main(check):
    status = 0
    for name in PAGES:
        path = FOLDER / f"{name}.5"
        text = page_of(name)
        if not check:
            path.write_text(text)
        elif path.read_text() != text:
            print(f"{path.name} is not what makePages.py makes of {PAGES[name][0]}: run it")
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:] == ["--check"]))
