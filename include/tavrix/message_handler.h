/* SPDX-License-Identifier: MIT
 *
 * Outside Windows the library's few messages go to standard error unless the program that embeds it
 * takes them itself.
 */
#ifndef TAVRIX_MESSAGE_HANDLER_H
#define TAVRIX_MESSAGE_HANDLER_H

#ifdef __cplusplus
extern "C" {
#endif

/* Called on the thread of the call that has something to say; text is UTF-8, without a line end. */
typedef void (*TavrixMessageHandler)(const char* text, void* context);

/* Installs a handler for all threads; null brings back standard error. May be called at any time. Once it
 * has returned, the handler that was installed before runs nowhere and is not called again, so that its
 * context may go. Called from within a handler it does not wait for handlers on other threads. */
__attribute__((visibility("default"))) void TavrixSetMessageHandler(TavrixMessageHandler handler,
                                                                    void* context);

#ifdef __cplusplus
}
#endif

#endif
