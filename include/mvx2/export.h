/**
 * @file
 * Marks what the shared library exports. Everything else is built with hidden visibility.
 */
#ifndef MVX2_EXPORT_H
#define MVX2_EXPORT_H

#define MVX2_API __attribute__((visibility("default")))

#endif
