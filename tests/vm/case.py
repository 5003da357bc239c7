#!/usr/bin/env python3
"""Stands in for a test program that ran in the virtual machine.

usage: case.py RESULTS PROGRAM --gtest_list_tests ...      lists the tests, from the program itself
       case.py RESULTS PROGRAM --gtest_filter=TEST ...     repeats the verdict that the boot left in RESULTS
"""
import json
import os
import sys


def main():
    results, program, *options = sys.argv[1:]
    if "--gtest_list_tests" in options:
        os.execv(program, [program, *options])
    test = next(option.partition("=")[2] for option in options if option.startswith("--gtest_filter="))
    with open(results, encoding="utf-8") as file:
        verdict = json.load(file).get(test)
    if verdict is None:
        print(f"{test} did not come to an end in the virtual machine")
        return 1
    print(verdict["output"], end="")
    return 0 if verdict["passed"] else 1


if __name__ == "__main__":
    sys.exit(main())
