#!/usr/bin/env python3
# Writes tests/data/date_years.txt: a line for every year from -4712 to 4000, by another road than the library's.
#
#     make_date_golden.py > tests/data/date_years.txt
#
# Days are counted one by one from -4712-01-01. From 1582-10-15 on the dates are Python's own; before, every year is a
# leap year whose number 4 divides, also before year 1, where astronomers have others: that is how the library has always
# numbered those days. Python's first day, 1582-10-15, has the day number 2299160 and is a Friday.
#
# A line has the year, the number of its first day, how many days it has, and a check sum over the year's days in
# turn: for each, CHECK = CHECK * 31 + month * 512 + day * 8 + weekday (Sunday is 0), modulo 2**32.
import datetime

LENGTHS = [31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31]
FIRST_GREGORIAN = datetime.date(1582, 10, 15)
JULIAN = [(year, month, day) for year in range(-4712, 1583) if year != 0
          for month, length in enumerate(LENGTHS, 1)
          for day in range(1, length + (month == 2 and year % 4 == 0) + 1)
          if (year, month, day) < (1582, 10, 5)]
GREGORIAN = (FIRST_GREGORIAN + datetime.timedelta(days=n)
             for n in range((datetime.date(4001, 1, 1) - FIRST_GREGORIAN).days))

years = {}
days = JULIAN + [(date.year, date.month, date.day) for date in GREGORIAN]
for number, (year, month, day) in enumerate(days, 2299160 - len(JULIAN)):
    first, count, check = years.get(year, (number, 0, 0))
    weekday = (number - 2299160 + 5) % 7
    years[year] = first, count + 1, (check * 31 + month * 512 + day * 8 + weekday) % 2**32

print("# Made by tests/time/make_date_golden.py: year, first day number, days, check sum over the days.")
for year, (first, count, check) in years.items():
    print(f"{year}|{first}|{count}|{check:08x}|")
