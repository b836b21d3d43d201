# SPDX-License-Identifier: Apache-2.0
"""What Doxygen reads in place of a file: the public headers with their plain comments as documentation, and Markdown with
links that hold on the site.

In a header, a comment right above declarations documents each of them. A comment that stands alone opens a family: it
becomes a group, which holds the declarations up to the next one. One that has no declarations, or all of them, belongs to
the description of the header."""
import pathlib
import re
import sys

NAMES = r"\bqel[ijs][A-Z]\w*"
ROOT = pathlib.Path(__file__).resolve().parents[2]


def known_functions():
    text = "".join(path.read_text() for path in sorted((ROOT / "include/qeljx").glob("*.h")))
    return set(re.findall(r"QEL_API[^;(]*?(qel[ijs][A-Z]\w*)\(", text))


def text_of(comment):
    """The lines inside /* */, without leading stars."""
    lines = comment.strip()[2:-2].split("\n")
    lines = [re.sub(r"^ ?\* ?", "", line.strip() if i == 0 else line.rstrip()) for i, line in enumerate(lines)]
    while lines and not lines[0].strip():
        lines.pop(0)
    while lines and not lines[-1].strip():
        lines.pop()
    return [line.lstrip() if i == 0 else line for i, line in enumerate(lines)]


def escaped(line, functions):
    """Prose for Doxygen: what it would take for markup is escaped, functions that exist become links."""
    parts = re.split(r"(`[^`]*`)", line)
    for i in range(0, len(parts), 2):
        parts[i] = re.sub(r"([\\@<>*&#%])", r"\\\1", parts[i])
        parts[i] = re.sub(NAMES + r"(?![\w*\\])", lambda m: m[0] + "()" if m[0] in functions else m[0], parts[i])
    return "".join(parts)


def prose(lines, functions):
    """Paragraphs stay; what is indented by four or more is a formula or a table and stays as it stands."""
    result, verbatim = [], False
    for i, line in enumerate(lines):
        following = next((other for other in lines[i:] if other.strip()), "")
        indented = line.startswith("    ") or (not line.strip() and verbatim and following.startswith("    "))
        indented = indented and not re.match(r" +- ", line)
        if indented != verbatim:
            result.append("@verbatim" if indented else "@endverbatim")
            verbatim = indented
        result.append(line if indented else escaped(line.strip() if not line.startswith(" ") else line, functions))
    return result + (["@endverbatim"] if verbatim else [])


def title_of(lines):
    return re.split(r"[(:.,;]", " ".join(lines), maxsplit=1)[0].strip().replace("`", "")


def block(lines, commands=()):
    return "/**\n" + "\n".join([*commands, *lines]) + "\n*/"


def pieces_of(text):
    """Comments that begin a line, and what is between them, in order."""
    at = 0
    for match in re.finditer(r"^/\*.*?\*/[^\n]*\n", text, re.S | re.M):
        yield "code", text[at:match.start()]
        yield "comment", match[0]
        at = match.end()
    yield "code", text[at:]


def documented(code, doc):
    """Declarations that follow a comment without an empty line have it, each of them."""
    first, rest = (code.split("\n\n", 1) + [""])[:2]
    if "QEL_API" in first:
        first = re.sub(r"^QEL_API", lambda _: doc + "\nQEL_API", first, flags=re.M)
    elif first.strip():
        first = doc + "\n" + first
    return first + ("\n\n" + rest if rest else "")


class Header:
    """Puts the pieces of a header together again."""

    def __init__(self, path, functions):
        self.functions, self.group = functions, path.stem
        self.out, self.families, self.intro, self.open = [], 0, [], False

    def close(self):
        if self.open:
            self.out.append("/** @} */")
        self.open = False

    def family(self, lines):
        self.close()
        self.families += 1
        name = f"{self.group}_{self.families}"
        heading = [f"@defgroup {name} {title_of(lines)}", f"@ingroup {self.group}", "@{"]
        self.out.append(block(prose(lines, self.functions), heading))
        self.open = True

    def families_of(self, pieces):
        """The comments that open a family, and those that are about the whole header, each as lines."""
        alone = [i for i, (kind, _) in enumerate(pieces)
                 if kind == "comment" and (not pieces[i + 1][1].strip() or pieces[i + 1][1].startswith("\n"))]
        alone = [i for i in alone if "SPDX" not in pieces[i][1]]
        declares = lambda first, end: any("QEL_API" in piece for kind, piece in pieces[first:end] if kind == "code")
        families = [i for i, end in zip(alone, alone[1:] + [len(pieces)]) if declares(i, end)]
        if len(families) == 1 and not declares(0, families[0]):
            families = []
        lines = lambda chosen: [text_of(pieces[i][1]) for i in chosen]
        return lines(families), lines(i for i in alone if i not in families)

    def convert(self, text):
        pieces = list(pieces_of(text))
        title = text_of(next(piece for kind, piece in pieces if kind == "comment" and "SPDX" not in piece))
        families, about = self.families_of(pieces)
        about = [lines for lines in about if lines != title]
        heading = [f"@defgroup {self.group} {title_of(title)} (qeljx/{self.group}.h)", "@ingroup reference"]
        self.out.append(block([f"@file qeljx/{self.group}.h", f"See @ref {self.group}."]))
        whole = [line for lines in [title, *about] for line in [*prose(lines, self.functions), ""]]
        self.out.append(block(whole, heading))
        self.out.append(f"/** @addtogroup {self.group} */\n/** @{{ */")
        for kind, piece in pieces:
            lines = text_of(piece.rsplit("*/", 1)[0] + "*/") if kind == "comment" else []
            if kind == "code":
                self.out.append(re.sub(r"/\* (.*?) \*/", lambda m: "/**< " + escaped(m[1], self.functions) + " */", piece))
            elif lines == title or lines in about or "SPDX" in piece:
                continue
            elif lines in families:
                self.family(lines)
            else:
                self.out.append(block(prose(lines, self.functions)))
        self.close()
        return self.joined() + "\n/** @} */\n"

    def joined(self):
        """Each comment is handed on to all declarations right behind it."""
        result = []
        for i, part in enumerate(self.out):
            before = self.out[i - 1] if i else ""
            if part.startswith("/**\n") and "@defgroup" not in part and "@file" not in part:
                continue
            is_doc = before.startswith("/**\n") and "@defgroup" not in before and "@file" not in before
            result.append(documented(part, before) if is_doc else part)
        return "\n".join(result)


def page_of(path):
    """The name of a Markdown file's page."""
    folder = "guide" if path.parent.name == "guides" else "examples" if path.parent.name == "examples" else "page"
    return "guides" if path.parent.name == "guides" and path.stem == "README" else f"{folder}_{path.stem}".lower()


def markdown(path, text):
    """Pages by their names on the site, examples likewise; what is no page of it loses its link."""

    def target(match):
        linked = (path.parent / match[2]).resolve()
        if linked.suffix == ".md":
            return f"[{match[1]}](@ref {page_of(linked)})"
        if linked.suffix == ".c":
            return f"[{match[1]}]({linked.stem}_8c-example.html)"
        return match[1]

    if path.name != "index.md":
        text = re.sub(r"^# (.*)$", lambda m: f"# {m[1]} {{#{page_of(path)}}}", text, count=1, flags=re.M)
    text = re.sub(r"(?<!!)\[([^\]]*)\]\((?!https?:|#|@)([^)#]*)\)", target, text)
    # Pictures lie beside the pages there.
    text = re.sub(r"(!\[[^\]]*\])\((?!https?:)(?:[^)/]*/)+", r"\1(", text)
    functions, code = known_functions(), False
    lines = text.split("\n")
    for i, line in enumerate(lines):
        code ^= line.startswith("```")
        if not code and not line.startswith("    "):
            parts = re.split(r"(`[^`]*`)", line)
            for j in range(0, len(parts), 2):
                parts[j] = re.sub(NAMES + r"(?!\w)", lambda m: m[0] + "()" if m[0] in functions else m[0], parts[j])
            lines[i] = "".join(parts)
    return "\n".join(lines)


def main():
    path = pathlib.Path(sys.argv[1])
    text = path.read_text()
    if path.suffix == ".md":
        sys.stdout.write(markdown(path, text))
    elif path.parent.name == "qeljx":
        sys.stdout.write(Header(path, known_functions()).convert(text))
    else:
        sys.stdout.write(text)


if __name__ == "__main__":
    main()
