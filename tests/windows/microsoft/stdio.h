/* SPDX-License-Identifier: MIT */
#pragma once
int putchar(int);
int puts(const char*);
