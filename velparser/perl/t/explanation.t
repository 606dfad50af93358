# What `explain` says about objects and parameters, and why each one is allowed there.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Model;
use VELTest;

my $rules = <<'TEXT';
RULES:
  PARAMETER: Anywhere
    Type = Real
    Units = m
    Expressions = No
  END
  SINGLETON: FLOW
    Parents = /
    Required Objects = DOMAIN
    Free Parameters = Yes
  END
  SINGLETON: LOOSE
  END
  OBJECT: BASE
    Parents = FLOW
    Description = What domains share.
  END
  OBJECT: DOMAIN
    Inherits = OBJECT:BASE
    Output Ordering Priority = 4
    Maximum Count = 3
    Required Parameters = Kind
    Optional Parameters = Note, Speeds, Plain
    CASE: Moving
      If Parameter = Kind
      Is One Of = Fluid, Gas
      Required Parameters = Speed
      Optional Objects = INLET
    END
    PARAMETER: Speeds
      Type = Real List
      Lower Bound = 0
      Bounds Exclusive = Yes
      Minimum Entries = 1
      Maximum Entries = 3
      Editable While Running = Yes
      Expert = Yes
      Output Ordering Priority = 7
    END
    PARAMETER: Unlisted
      Editable = No
    END
  END
  OBJECT: INLET
    Parents = DOMAIN
  END
  OBJECT: OUTLET
    Parents = DOMAIN
  END
END
TEXT
my $data = <<'TEXT';
FLOW:
  DOMAIN: f
    Kind = Fluid
  END
  DOMAIN: s
    Kind = Solid
  END
END
TEXT

my $database = database($rules, $data);
my $model    = VEL::Model->of($database);

sub explained ($path) {
    return join '', map {"$_->[0] = $_->[1]\n"} $model->explanation($path);
}

sub presence ($path) {
    my %field = map { @$_[ 0, 1 ] } $model->explanation($path);
    return $field{Presence};
}

is explained('/FLOW/DOMAIN:s/Speeds'), <<'TEXT', 'a parameter has every field';
Type = Real List
Lower Bound = 0
Bounds Exclusive = Yes
Minimum Entries = 1
Maximum Entries = 3
Editable = Yes
Editable While Running = Yes
Expert = Yes
Expressions = Yes
Output Ordering Priority = 7
Presence = optional, by "Optional Parameters" of OBJECT:DOMAIN
TEXT

is explained('/FLOW/DOMAIN:f'), <<'TEXT', 'an object has every field';
Description = What domains share.
Inherits = OBJECT:BASE
Parents = FLOW
Required Parameters = Kind, Speed
Optional Parameters = Note, Speeds, Plain
Free Parameters = No
Optional Objects = INLET
Maximum Count = 3
Expert = No
Output Ordering Priority = 4
Presence = required, by "Required Objects" of SINGLETON:FLOW
TEXT

is explained('/FLOW/DOMAIN:s/Plain'), <<'TEXT', 'a listed parameter without a rule has its defaults';
Type = String
Editable = Yes
Editable While Running = No
Expert = No
Presence = optional, by "Optional Parameters" of OBJECT:DOMAIN
TEXT

is presence('/FLOW/DOMAIN:s/Kind'), 'required, by "Required Parameters" of OBJECT:DOMAIN', 'required';
is presence('/FLOW/DOMAIN:f/Speed'),
    'required, by "Required Parameters" of CASE:Moving of OBJECT:DOMAIN (Kind is Fluid or Gas)',
    'required by a case';
is presence('/FLOW/DOMAIN:s/Speed'),
    'not used here, only in CASE:Moving of OBJECT:DOMAIN (Kind is Fluid or Gas)',
    'of a case that does not apply';
is presence('/FLOW/DOMAIN:s/Unlisted'), 'not used here: OBJECT:DOMAIN does not list it', 'not listed';
is presence('/FLOW/Anything'), 'optional, by "Free Parameters" of SINGLETON:FLOW', 'any name';
is presence('/FLOW/DOMAIN:f/INLET:i'),
    'optional, by "Optional Objects" of CASE:Moving of OBJECT:DOMAIN (Kind is Fluid or Gas)',
    'an object of a case';
is presence('/FLOW'),  'optional, by "Parents" of SINGLETON:FLOW',         'at the top level';
is presence('/LOOSE'), 'optional: SINGLETON:LOOSE has no "Parents"', 'anywhere';
is presence('/INLET:i'), 'not allowed here, by "Parents" of OBJECT:INLET', 'in a wrong place';

is presence('/FLOW/DOMAIN:f/OUTLET:o'), 'not allowed here: OBJECT:DOMAIN does not list it',
    'in a place where no list names it';

is explained('/FLOW/DOMAIN:s/Unknown'), '', 'no rule describes it';
is explained('/OTHER:o/Thing'),         '', 'nor anything in an unknown object';

done_testing;
