"""Finds the places of C++ source that can be mutated: one small change each, as a reader sees it.

The lexer relies on the project's format: clang-format puts blanks around binary operators and none
inside template brackets, pointers and references, which tells them apart without parsing types.
"""
import bisect
import dataclasses
import re

TOKEN = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>(?<![^\n])[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<raw>R"(?P<mark>[^()\\ ]*)\(.*?\)(?P=mark)")
  | (?P<string>"(?:\\.|[^"\\\n])*")
  | (?P<character>'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:'?[\w.]|[eEpP][+-])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<operator>->\*?|<=>|<<=|>>=|\+\+|--|&&|\|\||::|\.\.\.|[-+*/%&|^<>=!]=|<<|[-+*/%&|^<>=!~?:;,.(){}\[\]])
  | (?P<other>\S)
""", re.VERBOSE | re.DOTALL)
# ">>" is two closing brackets more often than a shift: it is put together where blanks surround it.

BINARY = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["&"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "|=": ["&="], "&=": ["|="], "*=": ["/="], "<<=": [">>="],
}
SWAPPED = {"true": "false", "false": "true"}
STEPS = {"++": "--", "--": "++"}
ASSIGNMENTS = {"=", "+=", "-=", "|=", "&=", "^=", "*=", "/=", "<<=", ">>="}
NUMBER = re.compile(r"(0[xX][0-9a-fA-F']+|\d[\d']*)([uUlLzZ]*)\Z")
REAL = re.compile(r"(\d[\d']*\.\d*|\.\d+|\d[\d']*(?=[eE]))((?:[eE][-+]?\d+)?[fFlL]?)\Z")
# A text that a program reads, such as a key or a format; one with blanks is prose for people.
PROGRAM_TEXT = re.compile(r'"[\w.:/%=|-]{0,16}"\Z')
OPENING, CLOSING = {"(": ")", "[": "]", "{": "}"}, {")", "]", "}"}


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


@dataclasses.dataclass(frozen=True, order=True)
class Mutant:
    path: str
    line: int
    start: int
    end: int
    before: str
    after: str

    def apply(self, text):
        return text[:self.start] + self.after + text[self.end:]

    def __str__(self):
        def shown(piece):
            return "nothing" if piece in ("", ";") else " ".join(piece.split())
        return f"{self.path}:{self.line}: {shown(self.before)}  ->  {shown(self.after)}"


def lex(text):
    """The tokens that mean something: neither comments nor directives, ">>" in one where it shifts."""
    tokens = []
    for match in TOKEN.finditer(text):
        kind = match.lastgroup if match.lastgroup != "mark" else "raw"
        if kind in ("comment", "directive"):
            continue
        tokens.append(Token(kind, match.group(), match.start()))
    return tokens


class Source:
    def __init__(self, path, text):
        self.path, self.text = path, text
        self.tokens = lex(text)
        self.lines = [match.start() for match in re.finditer("^", text, re.MULTILINE)]
        self.partner = self._partners()

    def _partners(self):
        """The index of the bracket that belongs to each bracket."""
        partner, stack = {}, []
        for index, token in enumerate(self.tokens):
            if token.kind == "operator" and token.text in OPENING:
                stack.append(index)
            elif token.kind == "operator" and token.text in CLOSING and stack:
                partner[stack[-1]], partner[index] = index, stack[-1]
                stack.pop()
        return partner

    def _text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def _spaced(self, token):
        return self.text[token.start - 1:token.start].isspace() and \
            self.text[token.end:token.end + 1].isspace()

    def _mutant(self, start, end, after):
        return Mutant(self.path, bisect.bisect_right(self.lines, start), start, end,
                      self.text[start:end], after)

    def _skipped(self):
        """Indices of tokens that say nothing a test could see: assertions and attributes."""
        skipped = set()
        for index, token in enumerate(self.tokens):
            opening = None
            if token.text in ("static_assert", "__attribute__", "alignas", "decltype"):
                opening = index + 1
            elif token.text == "[" and self._text(index + 1) == "[":
                opening = index
            if opening in self.partner:
                skipped.update(range(index, self.partner[opening] + 1))
            if token.text == "extern" and self._text(index + 1).startswith('"'):
                skipped.add(index + 1)
        return skipped

    def mutants(self):
        skipped = self._skipped()
        for index, token in enumerate(self.tokens):
            if index in skipped:
                continue
            if token.kind == "operator":
                yield from self._operator(index, token)
            elif token.kind == "number":
                yield from self._number(token)
            elif token.kind == "string":
                if PROGRAM_TEXT.match(token.text):
                    yield self._mutant(token.start, token.end, '"x"' if token.text == '""' else '""')
            elif token.text in SWAPPED:
                yield self._mutant(token.start, token.end, SWAPPED[token.text])
            elif token.text in ("if", "while") and self._text(index + 1) == "(":
                yield from self._condition(index + 1)
            if self._starts_statement(index):
                yield from self._statement(index)

    def _operator(self, index, token):
        text = token.text
        shift = text == ">" and self._text(index + 1) == ">" and self.text[token.end] == ">"
        if shift and self.text[token.start - 1].isspace() and self.text[token.end + 1].isspace():
            yield self._mutant(token.start, token.end + 1, "<<")
        elif text in BINARY and self._spaced(token) and self._text(index - 1) != "operator":
            for after in BINARY[text]:
                yield self._mutant(token.start, token.end, after)
        elif text == "!" and self._text(index + 1) != "=":
            yield self._mutant(token.start, token.end, "")
        elif text in STEPS and self._text(index - 1) != "operator":
            yield self._mutant(token.start, token.end, STEPS[text])

    def _number(self, token):
        if match := NUMBER.match(token.text):
            digits, suffix = match.groups()
            value = int(digits.replace("'", ""), 16 if digits[:2].lower() == "0x" else 10)
            write = hex if digits[:2].lower() == "0x" else str
            yield self._mutant(token.start, token.end, write(value + 1) + suffix)
            if value > 0:
                yield self._mutant(token.start, token.end, write(value - 1) + suffix)
        elif match := REAL.match(token.text):
            value = float(match[1].replace("'", ""))
            yield self._mutant(token.start, token.end, repr(value + 1) + match[2])

    def _condition(self, opening):
        """The condition of an if or a while, behind its own declaration, negated."""
        closing = self.partner.get(opening)
        if closing is None:
            return
        first, index = opening + 1, opening + 1
        while index < closing:
            if self._text(index) == ";":
                first = index + 1
            index = self.partner.get(index, index) + 1
        start, end = self.tokens[first].start, self.tokens[closing - 1].end
        # A condition that declares its variable has no negation.
        if all(token.text != "=" for token in self.tokens[first:closing]):
            yield self._mutant(start, end, f"!({self.text[start:end]})")

    def _starts_statement(self, index):
        before = self._text(index - 1)
        if before == ")":  # of an if, a for or a while without braces
            keyword = self._text(self.partner.get(index - 1, 0) - 1)
            return keyword in ("if", "for", "while")
        return before in (";", "{", "}", "else")

    def _statement(self, index):
        """A call, an assignment, a break or a continue, removed."""
        first = self.tokens[index]
        if first.kind != "name" or first.text in ("return", "throw", "using", "if", "for", "while"):
            return
        at = index
        if first.text not in ("break", "continue"):
            at = self._end_of_target(index)
            if not (self._text(at) in ASSIGNMENTS or self._text(at) in STEPS or self._text(at) == "("):
                return
        while self._text(at) not in (";", "", "{", "}"):
            at = self.partner.get(at, at) + 1
        if self._text(at) == ";":
            yield self._mutant(first.start, self.tokens[at].end, ";")

    def _end_of_target(self, index):
        """Behind a chain of names, members and subscripts; a declaration has two names in a row."""
        while True:
            if self.tokens[index].kind != "name":
                return index
            index += 1
            while self._text(index) == "[" and index in self.partner:
                index = self.partner[index] + 1
            called = self.partner.get(index) if self._text(index) == "(" else None
            if called is not None and self._text(called + 1) in (".", "->"):
                index = called + 1
            if self._text(index) not in ("::", ".", "->"):
                return index
            index += 1


def mutants_of(path, text):
    """All mutants of a file, in the order of the file; each changes the text once."""
    return sorted(set(Source(path, text).mutants()))
