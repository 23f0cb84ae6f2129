/*
 * The calendar behind the log's timestamps.
 */
#ifndef VASKDFC_TRANSPORT_H
#define VASKDFC_TRANSPORT_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/**
 * Writes a time of day as the log does: UTC, "1970-01-01T00:00:00", by the library's own calendar.
 *
 * The calendar differs from the usual one on purpose: a time exactly on a month or year boundary stays in the earlier period
 * ("1970-12-32T00:00:00"), and a year's length is decided by the year after it, so that a leap year's dates come out one day
 * behind and its 1 January is month 13 of the year before.
 *
 * @param time    points to a signed 32-bit count of seconds since 1970-01-01T00:00:00 UTC; a struct timeval as filled by
 *                gettimeofday will do
 * @param buffer  receives the text, cut to fit and NUL-terminated
 * @param size    bytes in the buffer; 20 hold every text of a time that is not negative
 * @return length of the whole text, whether it fitted or not
 */
int trel_GetTimeOfDay(const void* time, char* buffer, size_t size);

/**
 * Tells a leap year.
 *
 * @param year  Gregorian year
 * @return 1 for a leap year, else 0
 */
uint32_t trel_isLeap(uint32_t year);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
