package VEL::Parser::Lite;
use strict;
use warnings;
our $VERSION = '1.00';
# Objects are not shared with threads: each belongs to the one that made it.
sub CLONE_SKIP { return 1 }
if (defined &VEL::Parser::Lite::bootstrap) {
    VEL::Parser::Lite::bootstrap();
} else {
    require XSLoader;
    XSLoader::load(__PACKAGE__);
}
1;
