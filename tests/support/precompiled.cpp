// Nothing: the headers that most tests include are precompiled for this file, and the tests take them from
// it.
