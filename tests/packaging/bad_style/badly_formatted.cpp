// Not as clang-format lays it out.
int  twice( int x ){return 2*x;}
