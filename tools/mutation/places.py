"""Finds the places of a C++ source where a mutant can be made, and makes it.

Works on the text, and relies on the layout that .clang-format gives it: spaces around binary operators and none inside
template argument lists, one statement a line, braces on lines of their own.
"""
import dataclasses
import re

RELATIONAL = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",)}
ARITHMETIC = {
    "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("*",), "&": ("|",), "|": ("&",), "^": ("&",),
    "<<": (">>",), ">>": ("<<",), "+=": ("-=",), "-=": ("+=",), "*=": ("/=",), "/=": ("*=",), "%=": ("*=",),
    "&=": ("|=",), "|=": ("&=",), "^=": ("&=",), "<<=": (">>=",), ">>=": ("<<=",),
}
LOGICAL = {"&&": ("||",), "||": ("&&",)}

BINARY = re.compile(r"(?<=\s)(<<=|>>=|[-+*/%&|^]=|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^<>])(?=\s)")
STEP = re.compile(r"\+\+|--")
NOT = re.compile(r"(?<![\w!])!(?=[\w(])")
CONDITION = re.compile(r"\b(?:if|while) \(")
INTEGER = re.compile(r"(?<![\w.])(0x[0-9A-Fa-f]+|\d+)(?=[uUlL]*(?![\w.]))")
REAL = re.compile(r"(?<![\w.])\d+(?:\.\d+(?:e[-+]?\d+)?|e[-+]?\d+)(?![\w.])")
RETURN = re.compile(r"\breturn ([^;]+);")
TRUTH = re.compile(r"\b(?:true|false)\b")
ARRAY_DECLARATION = re.compile(r"^\s*(?:(?:const|static|alignas\(.*?\)) )*[\w:<>]+[*&]? \w+\[")
# A call or an assignment, not a declaration: what follows the first name is no other name.
EXPRESSION = re.compile(
    r"^[ \t]+(?!return\b|if\b|else\b|for\b|while\b|do\b|switch\b|case\b|default\b|break\b|continue\b|throw\b|try\b|"
    r"catch\b|using\b|goto\b|static_assert\b|sizeof\b)"
    r"(?=delete\b|\+\+|--|\*|\(|[A-Za-z_][\w:]*(?:<[^;()]*>)?(?:\(|\[|\.|->|\+\+|--| (?:[-+*/%&|^]|<<|>>)?= ))", re.M)


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One change of a source. It keeps its identity when lines elsewhere in the file come or go."""

    file: str  # below the root of the tree
    function: str  # which it is in; empty for constants outside functions
    kind: str
    before: str  # the lines that change, as one, and what they become
    after: str
    nth: int  # of the same change in the same function
    line: int  # today's
    start: int
    end: int
    replacement: str

    def identity(self):
        return "\n".join((self.file, self.function, self.before, self.after, str(self.nth)))

    def apply(self, text):
        return text[: self.start] + self.replacement + text[self.end :]

    def __str__(self):
        return f"{self.file}:{self.line} ({self.kind}) {self.before}  ->  {self.after}"


def mask(text):
    """The text with blanks for comments, literals of characters and strings, static_assert and the preprocessor."""
    pattern = re.compile(
        r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'"
        r"|^[ \t]*#(?:[^\n\\]|\\.|\\\n)*|\bstatic_assert\([^;]*;", re.S | re.M)
    return pattern.sub(lambda found: re.sub(r"[^\n]", " ", found.group()), text)


def kind_of_block(header):
    """What the text before an opening brace outside functions begins: "code", "values" or "scope"."""
    header = re.sub(r"\boperator\s*(?:\(\)|[^\s\w(]+)", "operator", header)
    header = re.sub(r"\btemplate <[^\n]*?>(?=\s)", "", header)
    previous = None
    while previous != header:
        previous, header = header, re.sub(r"\([^()]*\)", "@", header)
    if re.search(r"(?<![<>=!])=(?!=)", header):
        return "values"
    return "code" if "@" in header else "scope"


def name_of_function(header):
    names = re.findall(r"([~\w:]+(?: ?[^\s\w(]+)?)\(", header.split("\n    :")[0])
    return names[0].strip() if names else ""


def regions(masked):
    """Ranges of the text that are code, as (start, end, function), and those that hold constants outside functions."""
    code, values = [], []
    stack = []  # (kind, start, function)
    last = 0  # where the current statement or header begins
    for found in re.finditer(r"[{};]", masked):
        at = found.start()
        outer = stack[-1] if stack else ("scope", 0, "")
        if found.group() == "{":
            header = masked[last:at]
            if outer[0] != "scope":
                stack.append((outer[0], at, outer[2]))
            else:
                kind = kind_of_block(header)
                function = name_of_function(header) if kind == "code" else ""
                initialisers = re.search(r"\n\s+: ", header)
                start = last + initialisers.start() if kind == "code" and initialisers else at
                stack.append((kind, last if kind == "values" else start, function))
        elif found.group() == "}":
            if stack:
                kind, start, function = stack.pop()
                if not stack or stack[-1][0] == "scope":
                    if kind == "code":
                        code.append((start, at, function))
                    elif kind == "values":
                        values.append((start, at))
        elif outer[0] == "scope" and re.match(r"\s*(?:static )?const(?:expr)? [^()]*=", masked[last:at]):
            values.append((last, at))
        if outer[0] == "scope" or found.group() != ";":
            last = at + 1
    return code, values


def closing(masked, opening):
    """Position of the parenthesis that closes the one at `opening`."""
    depth = 0
    for at in range(opening, len(masked)):
        depth += {"(": 1, ")": -1}.get(masked[at], 0)
        if depth == 0:
            return at
    return None


def constants(masked, start, end):
    for found in REAL.finditer(masked, start, end):
        yield "constant", found.start(), found.end(), f"({found.group()} + 1)"
    for found in INTEGER.finditer(masked, start, end):
        line = masked[masked.rfind("\n", 0, found.start()) + 1 : found.start() + 1]
        if masked[found.start() - 1] == "[" and ARRAY_DECLARATION.match(line):
            continue
        value = int(found.group(), 0)
        yield "constant", found.start(), found.end(), str(value + 1)
        if value > 0:
            yield "constant", found.start(), found.end(), str(value - 1)


def operators(masked, start, end):
    for found in BINARY.finditer(masked, start, end):
        for kind, table in (("relational", RELATIONAL), ("arithmetic", ARITHMETIC), ("logical", LOGICAL)):
            for other in table.get(found.group(), ()):
                yield kind, found.start(), found.end(), other
    for found in STEP.finditer(masked, start, end):
        yield "arithmetic", found.start(), found.end(), "--" if found.group() == "++" else "++"


def conditions(masked, text, start, end):
    for found in NOT.finditer(masked, start, end):
        yield "condition", found.start(), found.end(), ""
    for found in CONDITION.finditer(masked, start, end):
        opening = found.end() - 1
        last = closing(masked, opening)
        if last is not None:
            yield "condition", opening, last + 1, f"(!{text[opening : last + 1]})"


def statements(masked, start, end):
    for found in EXPRESSION.finditer(masked, start, end):
        before = masked[:found.start()].rstrip()
        if not before or before[-1] not in ";{}:":
            continue
        last = masked.find(";", found.end())
        body = masked[found.end() : last]
        if last != -1 and "{" not in re.sub(r"\{[^{};\n]*\}", "", body):
            yield "statement", found.end(), last + 1, ";"


def results(masked, start, end):
    for found in RETURN.finditer(masked, start, end):
        if "{" not in found.group(1) and found.group(1) not in ("true", "false", "*this"):
            yield "result", found.start(1), found.end(1), "{}"
    for found in TRUTH.finditer(masked, start, end):
        yield "result", found.start(), found.end(), "false" if found.group() == "true" else "true"


def changes(text):
    masked = mask(text)
    code, values = regions(masked)
    for start, end, function in code:
        for source in (operators(masked, start, end), conditions(masked, text, start, end),
                       statements(masked, start, end), results(masked, start, end), constants(masked, start, end)):
            for change in source:
                yield function, change
    for start, end in values:
        for change in constants(masked, masked.find("=", start), end):
            yield "", change


def one_line(text):
    return " ".join(text.split())


def mutants_of(file, text):
    """All mutants of a source, in the order of their places."""
    found, seen = [], {}
    for function, (kind, start, end, replacement) in changes(text):
        first = text.rfind("\n", 0, start) + 1
        last = text.find("\n", end)
        before = one_line(text[first:last])
        after = one_line(text[first:start] + replacement + text[end:last])
        same = (function, before, after)
        seen[same] = seen.get(same, 0) + 1
        line = text.count("\n", 0, start) + 1
        found.append(Mutant(file, function, kind, before, after, seen[same], line, start, end, replacement))
    return sorted(found, key=lambda mutant: (mutant.start, mutant.replacement))


def code_lines(text):
    return sum(1 for line in mask(text).splitlines() if line.strip(" \t{}();"))
