# Read by the embedded interpreter when it starts. The file is compiled and never run, so
# everything in it happens at compile time.
use strict;
use warnings;

use VEL::Parser::Lite;
use API;
