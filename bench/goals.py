"""What every conversion is meant to reach: conversion, direction and mode (patterns), against what, how many times."""

import re

TOP_DOWN, BOTTOM_UP, BOTH = "top-down", "bottom-up", "."
COLD, HOT, PAIR = "cold", "hot", "pair"
PEER, SAME_WORK = "peer", "same work"

GOALS = [
    # Nobody who does the same work is faster, whatever the group.
    (r".", BOTH, r".", SAME_WORK, 1.0),
    (r"^(bgrx::bgrx|y::y)$", TOP_DOWN, r"cold|hot", PEER, 1.0),
    (r"^bgra::bgra$", TOP_DOWN, "1080/cold", PEER, 0.88),
    (r"^bgra::bgra$", TOP_DOWN, "2160/cold", PEER, 1.0),
    (r"^bgra::bgra$", BOTTOM_UP, COLD, PEER, 1.35),
    (r"^bgra::bgra$", BOTTOM_UP, PAIR, PEER, 1.55),
    (r"^(vuya|ycbcra)::uyvy_a", TOP_DOWN, COLD, PEER, 1.1),
    (r"^(vuya|ycbcra)::uyvy_a", TOP_DOWN, "2160/cold", "store limit", 1.2),
    (r"^(vuya|ycbcra)::uyvy_a", TOP_DOWN, HOT, PEER, 4.0),
    (r"^vuya::uyvy_a", BOTTOM_UP, "1080/cold", "store limit", 0.88),
    (r"^vuya::uyvy_a", BOTTOM_UP, "2160/cold", "store limit", 1.15),
    (r"^vuya::uyvy_a", BOTTOM_UP, PAIR, "memcpy", 0.93),
    (r"^(vuyx|ycbcrx)::uyvy$", TOP_DOWN, COLD, PEER, 1.15),
    (r"^(vuya|ycbcra)::uyvy$", TOP_DOWN, COLD, "store limit", 1.0),
    (r"^(bgr|rgb)(a|x)_(601|709)::uyvy", TOP_DOWN, COLD, "store limit", 1.0),
    (r"^(bgr|rgb)x_(601|709)::uyvy", TOP_DOWN, "2160/cold", PEER, 3.0),
    (r"^(bgr|rgb)(a|x)_(601|709)::uyvy", TOP_DOWN, HOT, PEER, 4.0),
    (r"^(bgra|rgba|bgr)::uyvy$", TOP_DOWN, COLD, "store limit", 1.0),
    (r"^(bgra|rgba|bgr)::uyvy$", TOP_DOWN, COLD, PEER, 1.8),
    (r"^(bgr|rgb)(a|x)_(601|709)::(ycbcr|crcby)", TOP_DOWN, COLD, "store limit", 1.0),
    (r"^(bgr|rgb)(a|x)_(601|709)::(ycbcr|crcby)", TOP_DOWN, HOT, PEER, 3.0),
    (r"^uyvy::(bgra|rgba)", TOP_DOWN, "2160/cold", PEER, 1.15),
    (r"^uyvy::(bgra|rgba)", TOP_DOWN, HOT, PEER, 2.0),
    (r"^uyvy_a::bgra", TOP_DOWN, "2160/cold", PEER, 1.25),
    (r"^uyvy_a::bgra", TOP_DOWN, HOT, PEER, 1.5),
    (r"^uyvy::bgr_", TOP_DOWN, COLD, PEER, 1.9),
    (r"^uyvy::r_g_b", TOP_DOWN, COLD, PEER, 7.0),
    (r"^uyvy::(yuy2|y_uv_422|y_u_v_422|y)$", TOP_DOWN, "2160/cold", PEER, 1.1),
    (r"^uyvy::y_uv_420$", TOP_DOWN, "1080/cold", PEER, 1.2),
    (r"^uyvy::y_uv_420$", TOP_DOWN, "2160/cold", PEER, 1.15),
    (r"^uyvy::y_u_v_420$", TOP_DOWN, COLD, PEER, 1.5),
    (r"^(y_uv|y_u_v)::y_uv$", TOP_DOWN, r".", PEER, 1.0),
    (r"^(y_uv|y_u_v)::y_uv_to422$", TOP_DOWN, COLD, PEER, 1.1),
    (r"^y::uyvy", TOP_DOWN, COLD, PEER, 1.1),
    (r"^uyvy(_a)?::(ycbcr|crcby)", TOP_DOWN, "2160/cold", "store limit", 1.1),
    (r"^uyvy(_a)?::(ycbcr|crcby)", TOP_DOWN, HOT, PEER, 2.5),
    (r"::ya_uv", TOP_DOWN, HOT, PEER, 1.3),
    (r"^uyvy_a::uyvy$", TOP_DOWN, HOT, PEER, 2.0),
    (r"^black::", TOP_DOWN, COLD, PEER, 2.0),
    (r"^v210::uyvy$", TOP_DOWN, COLD, PEER, 4.0),
    (r"^v210::uyvy$", TOP_DOWN, HOT, PEER, 10.0),
    (r"^(p216::uyvy|alpha_u16::alpha|L::bgra)$", TOP_DOWN, "2160/cold", PEER, 1.15),
]

# What two measurements of the same thing differ by.
TOLERANCE = 0.03


def judged(line):
    """The hardest goal against each limit and peer of one line of the table: (against, goal, reached)."""
    hardest = {}
    for name, direction, mode, against, goal in GOALS:
        if against not in line or not all(re.search(p, line[k]) for p, k in ((name, "name"), (direction, "direction"), (mode, "mode"))):
            continue
        who, reached = line[against]
        if who not in hardest or goal > hardest[who][0]:
            hardest[who] = (goal, reached)
    return [(who, *goal) for who, goal in hardest.items()]


def met(goal, reached):
    return reached >= goal * (1 - TOLERANCE)
