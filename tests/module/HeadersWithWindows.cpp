// Compiled with all public headers and windows.h in front of it, given on the command line in either order.

#if !defined(MAX_PATH)
#error "windows.h is missing"
#endif

#if defined(NOMINMAX) && (defined(min) || defined(max))
#error "a public header brings min or max back"
#endif
