#!/usr/bin/env python3
"""pageTables.py findings|codes|rules PAGE HEADER [HEADER-OF-CHECKS...]

Makes the table that the tool is compiled with from the page that people read: HEADER from docs/findings.md,
docs/status-codes.md or docs/plugin-rules.md. An entry of a page is a heading, then one paragraph for each of its fields, in order:

    ### `identifier` (severity, or the number of a code)

    What the field without a label says.

    **Label:** What the field with this label says.

The paragraphs after the fields, up to the next heading, are for readers only. So is all outside the entries. The lines
of a paragraph become one. A terminal shows no code, so `code` becomes 'code'.
"""
import json
import re
import sys
from itertools import takewhile
from pathlib import Path
from typing import NamedTuple, NoReturn

FINDING = {"meaning": "", "remedy": "**What to do:** "}
RULE = {"title": "**Kept when:** ", "meaning": "", "remedy": "**What to do:** ", "needs": "**Needs:** ",
        "lock": "**Locks:** "}
MAY_LACK = {"lock"}
PLUGIN = "{plugin}"  # in a finding's remedy: here the doctor prints the name of the plug-in


class Paragraph(NamedTuple):
    """A paragraph or heading, in one line, and the number of its first line in the page."""
    line: int
    text: str


class Entry(NamedTuple):
    line: int
    id: str
    severity: str
    fields: dict[str, str]


class PageError(Exception):
    """What is wrong at a line of the page."""


def fail(line: int, text: str) -> NoReturn:
    raise PageError(f"{line}: error: {text}")


def paragraphs_of(page: str) -> list[Paragraph]:
    paragraphs: list[Paragraph] = []
    begins = True
    for number, line in enumerate(page.splitlines(), 1):
        text = line.strip()
        is_heading = text.startswith("#")
        if text and (begins or is_heading):
            paragraphs.append(Paragraph(number, text))
        elif text:
            first = paragraphs.pop()
            paragraphs.append(Paragraph(first.line, f"{first.text} {text}"))
        begins = is_heading or not text
    return paragraphs


def fields_of(name: str, heading: Paragraph, section: list[Paragraph], labels: dict[str, str]) -> dict[str, str]:
    """The fields with which the section of an entry begins; nothing else in it looks like a field."""
    fields = {}
    at = 0
    order = "its paragraphs are: " + ", ".join(label.strip() or field for field, label in labels.items())
    for field, label in labels.items():
        here = section[at] if at < len(section) else Paragraph(heading.line, "")
        if here.text.startswith(label) if label else re.match(r"[^*]", here.text):
            fields[field] = here.text[len(label):]
            at += 1
        elif field in MAY_LACK:
            fields[field] = ""
        else:
            fail(here.line, f"here `{name}` lacks its paragraph {label.strip() or field}; {order}")
    for rest in section[at:]:
        if re.match(r"\*\*[^*]*:\*\*", rest.text):
            fail(rest.line, f"`{name}` has {rest.text.split(':')[0]}:** here; {order}")
    return fields


def check_placeholders(entry: Entry, labels: dict[str, str]) -> None:
    for field, text in entry.fields.items():
        for found in re.findall(r"\{[\w-]*\}", text):
            if found != PLUGIN or (field, labels) != ("remedy", FINDING):
                fail(entry.line, f"`{entry.id}` has the placeholder {found} in its {field}; there is only {PLUGIN}, "
                                 "in the remedy of a finding")


IDENTIFIER = "[a-z][a-z0-9]*(?:-[a-z0-9]+)*"


def entries_of(page: str, labels: dict[str, str], severities: str, identifier: str = IDENTIFIER) -> list[Entry]:
    """The entries of a page. `severities` and `identifier` are patterns."""
    entries: dict[str, Entry] = {}
    paragraphs = paragraphs_of(page)
    for i, heading in enumerate(paragraphs):
        if not heading.text.startswith("### "):
            continue
        match = re.fullmatch(rf"### `({identifier})` \((\S*)\)", heading.text)
        if not match:
            fail(heading.line, f"'{heading.text}' must be '### `identifier` (severity)', the identifier of the form "
                               f"{identifier}")
        name, severity = match.groups()
        if not re.fullmatch(severities, severity):
            fail(heading.line, f"`{name}` has '{severity}' in brackets; it must be {severities}")
        if name in entries:
            fail(heading.line, f"`{name}` is also in line {entries[name].line}")
        section = list(takewhile(lambda p: not re.match("#{1,3} ", p.text), paragraphs[i + 1:]))
        entries[name] = Entry(heading.line, name, severity, fields_of(name, heading, section, labels))
        check_placeholders(entries[name], labels)
    if not entries:
        fail(1, "the page has no heading '### `identifier` (severity)'")
    return list(entries.values())


def camel_case(name: str) -> str:
    """`library-missing` as a name of the code: libraryMissing."""
    first, *others = name.split("-")
    return first + "".join(word.capitalize() for word in others)


def literal(text: str) -> str:
    return json.dumps(text.replace("`", "'"), ensure_ascii=False)


def findings_header(page: str) -> str:
    entries = entries_of(page, FINDING, "info|warning|error")
    constants = ""
    for entry in entries:
        remedy = ",\n     ".join(literal(part) for part in entry.fields["remedy"].split(PLUGIN))
        constants += f"""
inline constexpr FindingKind {camel_case(entry.id)}{{
    "{entry.id}", Severity::{entry.severity.capitalize()},
    {literal(entry.fields["meaning"])},
    {{{remedy}}}}};
"""
    pointers = "\n".join(f"    &{camel_case(entry.id)}," for entry in entries)
    return f"""#ifndef VYKELDEV_MACHINE_FINDINGS_H
#define VYKELDEV_MACHINE_FINDINGS_H

#include "machine/Finding.h"

/// Everything that the doctor can find.
namespace vykeldev::finding {{
{constants}
/// All of them, in the order of the page.
inline constexpr const FindingKind* all[] = {{
{pointers}
}};

}} // namespace vykeldev::finding

#endif
"""


def codes_header(page: str) -> str:
    rows = "".join(f"""
    {{{entry.severity}, "{entry.id}",
     {literal(entry.fields["meaning"])},
     {literal(entry.fields["remedy"])}}},""" for entry in entries_of(page, FINDING, r"-\d+", r"\w+"))
    return f"""#ifndef VYKELDEV_OUTPUT_STATUSTABLE_H
#define VYKELDEV_OUTPUT_STATUSTABLE_H

#include <cstdint>

namespace vykeldev {{

/// What a status code means, for people.
struct Explanation {{
    std::int32_t code;
    const char* name;
    const char* meaning;
    const char* remedy;
}};

/// The codes of the library.
inline constexpr Explanation statusTable[] = {{{rows}
}};

}} // namespace vykeldev

#endif
"""


def needed_rule(rule: Entry, earlier: list[Entry]) -> str:
    """The identifier of the rule that this one needs, or an empty text."""
    text = rule.fields["needs"]
    if text != "nothing" and text not in (f"`{other.id}`" for other in earlier):
        fail(rule.line, f"`{rule.id}` needs {text}; it must need 'nothing' or the `identifier` of a rule before it")
    return "" if text == "nothing" else text.strip("`")


def rules_header(page: str, headers: list[Path]) -> str:
    """The table of rules. `headers` declare their checks, which are named like the rules."""
    entries = entries_of(page, RULE, "warning|error")
    functions = ["check" + camel_case("-" + entry.id) for entry in entries]
    rules = ""
    for i, (entry, function) in enumerate(zip(entries, functions)):
        fields = entry.fields
        rules += f"""
    {{"{entry.id}", {literal(fields["title"])},
     Severity::{entry.severity.capitalize()}, "{needed_rule(entry, entries[:i])}", "{fields["lock"].strip("`")}",
     {literal(fields["meaning"])},
     {literal(fields["remedy"])},
     {function}}},"""
    for header in headers:
        for check in re.findall(r"\bcheck[A-Z]\w*", header.read_text(encoding="utf-8")):
            if check not in functions:
                fail(len(page.splitlines()), f"no rule here is checked by {check}, which {header.name} declares")
    includes = "\n".join(f'#include "check/{header.name}"' for header in headers)
    return f"""#ifndef VYKELDEV_CHECK_RULETABLE_H
#define VYKELDEV_CHECK_RULETABLE_H

{includes}

namespace vykeldev::check {{

/// All rules, each after the one that it needs.
inline constexpr Rule ruleTable[] = {{{rules}
}};

}} // namespace vykeldev::check

#endif
"""


def main(kind: str, page: str, header: str, *headers: str) -> None:
    try:
        text = Path(page).read_text(encoding="utf-8")
        table = (findings_header(text) if kind == "findings" else codes_header(text) if kind == "codes"
                 else rules_header(text, [Path(each) for each in headers]))
    except PageError as error:
        sys.exit(f"{page}:{error}")
    note = f"// Made from docs/{Path(page).name} by tools/vykeldev/pageTables.py. Change the page, not this file.\n"
    Path(header).write_text(note + table, encoding="utf-8")


main(*sys.argv[1:])
