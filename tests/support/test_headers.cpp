// Carries the precompiled headers of all tests.
