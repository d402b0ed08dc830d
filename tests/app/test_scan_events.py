#!/usr/bin/env python3
"""The events of a scan: one line for each call of the listener, with the values exactly as they were made."""
import json
import struct

import host


def single(value):
    """The number in single precision."""
    return struct.unpack("f", struct.pack("f", value))[0]


def book(count):
    return "".join(host.card(f"N:Doe{i};Jane;;;", f"FN:Jane Doe{i}", "NOTE:x") for i in range(count))


class Events(host.HostTest):
    def events(self, *arguments):
        lines = self.run_host("scan", "--events", *arguments).out.splitlines()
        return [json.loads(line) for line in lines], lines

    def progress(self, *arguments):
        events, _ = self.events(*arguments)
        return [event["progress"] for event in events if event["event"] == "finding"]

    def test_start_comes_first_and_the_result_last(self):
        path = self.write("a.vcf", book(3))
        events, lines = self.events(path)
        self.assertEqual('{"event": "start"}', lines[0])
        self.assertEqual(["event", "result"], list(events[-1]))
        self.assertEqual("end", events[-1]["event"])
        self.assertEqual({"finding"}, {event["event"] for event in events[1:-1]})
        self.assertEqual({("event", "progress")}, {tuple(event) for event in events[1:-1]})

    def test_the_result_is_the_document(self):
        path = self.write("a.vcf", book(5) + host.card("FN:"))
        events, _ = self.events("--all-issues", path)
        self.assertEqual(self.run_host("scan", "--json", "--all-issues", path).json(), events[-1]["result"])

    def test_fifteen_bands_end_at_the_sums_of_the_step(self):
        step = single(single(100.0) / single(15.0))
        self.assertEqual(6.666666507720947, step)
        values = self.progress("--all-issues", self.write("a.vcf", book(7)))
        place = 0
        edge = 0.0
        for _ in range(15):
            lower, edge = edge, edge + step
            self.assertIn(edge, values[place:])
            end = values.index(edge, place)
            # InvalidCharacters reports its own end too, so the edge may stand there twice.
            while end + 1 < len(values) and values[end + 1] == edge:
                end += 1
            for value in values[place:end]:
                self.assertTrue(lower <= value <= edge, (lower, value, edge))
            place = end + 1
        self.assertEqual(len(values), place)
        self.assertEqual(99.99999761581421, values[-1])

    def test_one_issue_ends_at_a_hundred(self):
        path = self.write("a.vcf", book(4))
        self.assertEqual([0, 25, 50, 75, 100], self.progress("--issues", "blank-name", path))
        self.assertEqual([25, 50, 75, 100, 100], self.progress("--issues", "invalid-characters", path))

    def test_three_issues_scale_their_progress(self):
        path = self.write("a.vcf", book(2))
        step = single(single(100.0) / single(3.0))
        values = self.progress("--issues", "blank-name,incomplete-name,empty-note", path)
        self.assertIn(16.66666603088379, values)
        base = 0.0
        wanted = []
        for _ in range(3):
            wanted += [percent / 100.0 * step + base for percent in (0.0, 50.0)]
            base += step
            wanted.append(base)
        self.assertEqual(wanted, values)

    def test_an_empty_book_reports_each_issue_once(self):
        self.assertEqual([50, 100], self.progress("--issues", "blank-name,empty-note", self.write("a.vcf", "")))

    def test_without_an_issue_in_use_there_is_no_progress(self):
        path = self.write("a.vcf", book(2))
        self.run_host("issues", "drop", *host.ISSUES)
        events, _ = self.events(path)
        self.assertEqual(["start", "end"], [event["event"] for event in events])
        self.assertEqual([], events[-1]["result"]["issues"])


if __name__ == "__main__":
    host.main()
