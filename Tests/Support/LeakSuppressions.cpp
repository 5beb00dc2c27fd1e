// Read by the leak sanitizer, in every test program of a sanitizer build; unused in all others.
// A server forgets its routes without freeing them, so that what their handlers hold lives on.
// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizer's name for it
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() { return "leak:HttpServer::addRoute\n"; }
// NOLINTEND(bugprone-reserved-identifier)
