// Read by the leak sanitizer, in every test program of a sanitizer build; unused in all others.
// A server forgets its routes without freeing them, so that what their handlers hold lives on.
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() { return "leak:HttpServer::addRoute\n"; }
