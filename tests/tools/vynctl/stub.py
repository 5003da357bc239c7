# SPDX-License-Identifier: MIT
"""vynctl over the library that stands in for the production one, with a watchdog that the test decides about."""
import subprocess
import time

import tool


class Case(tool.Case):
    def setUp(self):
        self.folder = self.scratch()
        self.lock = self.folder / "lock"

    def fates(self, text):
        """What becomes of the feedings of the next run."""
        (self.folder / "log").unlink(missing_ok=True)
        (self.folder / "feedings").write_text(text)

    def feed(self, *arguments, stdout=subprocess.PIPE, options=(), **changes):
        """Starts "vynctl watchdog feed", in a process group of its own: the kernel stops no process of an orphaned one."""
        process = subprocess.Popen([tool.VYNCTL, "--lock-file", str(self.lock), *options, "watchdog", "feed",
                                    *arguments], stdout=stdout, stderr=subprocess.PIPE, text=True, cwd=self.folder,
                                   env=tool.environment(LD_LIBRARY_PATH=tool.STUB, **changes), process_group=0)
        self.addCleanup(process.stderr.close)
        if process.stdout:
            self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def log(self, *kinds):
        """(kind, time) of the library's calls so far."""
        path = self.folder / "log"
        lines = path.read_text().splitlines() if path.exists() else []
        calls = [(line.split()[0], float(line.split()[1])) for line in lines if len(line.split()) == 2]
        return [call for call in calls if not kinds or call[0] in kinds]

    def await_log(self, kind, count=1, seconds=60):
        end = time.monotonic() + seconds
        while len(self.log(kind)) < count:
            self.assertLess(time.monotonic(), end, f"{kind} is not logged {count} times: {self.log()}")
            time.sleep(0.005)
