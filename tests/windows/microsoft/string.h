/* SPDX-License-Identifier: MIT */
#pragma once
void* memcpy(void*, const void*, __SIZE_TYPE__);
void* memset(void*, int, __SIZE_TYPE__);
