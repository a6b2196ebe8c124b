#!/usr/bin/env python3
# watch-test.py change FOLDER: changes the devices of the sample plug-in and what it keeps in FOLDER 500 times, at random.
# watch-test.py fold: what `vykeldev watch` wrote of that, folded, must be what `vykeldev list` wrote at the end.
import json
import os
import random
import sys
import time
from pathlib import Path


def change(folder):
    rng = random.Random(1)
    present = set()
    for _ in range(500):
        token = rng.choice("abcdefgh")
        if rng.random() < 0.5:
            present ^= {token}
            lines = [f'token={each} token2="{each} 2" alias=""\n' for each in rng.sample(sorted(present), len(present))]
            Path("next").write_text("".join(lines))
            os.replace("next", "plugin/simulated.devices")
        elif token in present:
            what = f"number={rng.randrange(8, 99)}" if rng.random() < 0.5 else f"alias=n{rng.randrange(3)}"
            with open(f"{folder}/simulated.numbers", "a") as file:
                file.write(f"\ntoken={token} {what}")
        time.sleep(rng.choice([0, 0.01, 0.03]))


def fold():
    devices, kinds = {}, set()
    for line in Path("watch.json").read_text("utf-8").splitlines():
        event = json.loads(line)
        kind, token, before = event["event"], event["token"], devices.get(event["token"])
        now = [event["number"], event["alias"]]
        fits = {"present": not before and kinds <= {kind}, "added": not before, "removed": before == now,
                "renumbered": before and before[0] == event.get("previousNumber") != now[0],
                "renamed": before and before[1] == event.get("previousAlias") != now[1]}
        if not fits[kind]:
            sys.exit(f"{line} does not follow {before}")
        if kind == "renumbered":
            now[1] = before[1]  # a new alias is an event of its own
        devices[token] = now
        if kind == "removed":
            del devices[token]
        kinds.add(kind)
    listed = json.loads(Path("list.json").read_text("utf-8"))["devices"]
    if devices != {each["token"]: [each["number"], each["alias"]] for each in listed} or len(kinds) < 5:
        sys.exit(f"{devices} is not {listed}, or too little happened: {kinds}")


change(sys.argv[2]) if sys.argv[1] == "change" else fold()
