# SPDX-License-Identifier: MIT
"""Makes a failing case small: takes parts away as long as it still fails."""
import copy

from executor import Command
from features import STEPS


def shrink(case, fails):
    case = copy.deepcopy(case)
    while any([step(case, fails) for step in STEPS_OF_SHRINKING]):
        pass
    return case


def without(case, fails, path):
    """Removes elements of the list at `path`, in ever smaller runs. True when something went."""
    removed = False
    size = max(1, len(at(case, path)) // 2)
    while size:
        start = 0
        while start < len(at(case, path)):
            trial = copy.deepcopy(case)
            del at(trial, path)[start:start + size]
            if fails(copy.deepcopy(trial)):
                case.clear()
                case.update(trial)
                removed = True
            else:
                start += size
        size //= 2
    return removed


def at(case, path):
    for key in path:
        case = case[key]
    return case


def fewer_calls(case, fails):
    return without(case, fails, ["calls"]) | without(case, fails, ["after"])


def fewer_tables(case, fails):
    removed = without(case, fails, ["tables"])
    for number in range(len(case["tables"])):
        removed |= without(case, fails, ["tables", number, "records"])
    return removed


def smaller_machine(case, fails):
    return any([without(case, fails, ["machine", part]) for part in ("ports", "pairs", "pci", "memory", "msr")])


def fewer_commands(case, fails):
    removed = False
    for table in range(len(case["tables"])):
        for record in range(len(case["tables"][table]["records"])):
            removed |= shorter_body(case, fails, ["tables", table, "records", record])
    return removed


def shorter_body(case, fails, path):
    for start, end in commands(bytes.fromhex(at(case, path)["body"])):
        trial = copy.deepcopy(case)
        body = bytes.fromhex(at(trial, path)["body"])
        at(trial, path)["body"] = (body[:start] + body[end:]).hex()
        if fails(copy.deepcopy(trial)):
            case.clear()
            case.update(trial)
            return True
    return False


def commands(body):
    """(start, end) of each command, as far as the body can be stepped through."""
    places, start = [], 0
    while start + 3 <= len(body):
        command = Command(body, start)
        end = start + STEPS.get((command.kind, command.form), len(body))
        places.append((start, min(end, len(body))))
        start = end
    return places


def quieter_bytes(case, fails):
    """Sets bytes of bodies and registers to 0, in halving runs."""
    changed = False
    for table in range(len(case["tables"])):
        for record in range(len(case["tables"][table]["records"])):
            changed |= zeroed(case, fails, ["tables", table, "records", record], "body")
    for pair in range(len(case["machine"]["pairs"])):
        changed |= zeroed(case, fails, ["machine", "pairs", pair], 2)
    return changed


def zeroed(case, fails, path, key):
    changed = False
    size = len(bytes.fromhex(at(case, path)[key]))
    run = size
    while run:
        for start in range(0, size, run):
            trial = copy.deepcopy(case)
            body = bytearray.fromhex(at(trial, path)[key])
            if not any(body[start:start + run]):
                continue
            body[start:start + run] = bytes(len(body[start:start + run]))
            at(trial, path)[key] = body.hex()
            if fails(copy.deepcopy(trial)):
                case.clear()
                case.update(trial)
                changed = True
        run //= 2
    return changed


STEPS_OF_SHRINKING = (fewer_calls, fewer_tables, smaller_machine, fewer_commands, quieter_bytes)
