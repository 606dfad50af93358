# Paths and components, taken apart.
use strict;
use warnings;
use Test::More;

use VEL::Path qw(split_path last_component split_component name_at);

is_deeply [ split_path('/FLOW/DOMAIN:Duct/Kind') ], [ '/FLOW/DOMAIN:Duct', 'Kind' ], 'a parameter';
is_deeply [ split_path('/FLOW/DOMAIN:Duct') ], [ '/FLOW', 'DOMAIN:Duct' ], 'an object';
is_deeply [ split_path('/FLOW') ], [ '/', 'FLOW' ], 'at the top level';
is_deeply [ split_path('/') ],     [ '/', '' ],     'the root';

is last_component('/FLOW/DOMAIN:Duct'), 'DOMAIN:Duct', 'the last component of an object';
is last_component('/FLOW'),             'FLOW',        'the last component at the top level';
is last_component('/'),                 '',            'the root has none';

is_deeply [ split_component('DOMAIN:Duct') ], [ 'DOMAIN', 'Duct' ],  'a type and a name';
is_deeply [ split_component('FLOW') ],        [ 'FLOW',   undef ],   'a singleton';
is_deeply [ split_component('Wall: left') ],  [ 'Wall',   ' left' ], 'blanks stay';
is_deeply [ split_component('A:b:c') ],       [ 'A',      'b:c' ],   'the first colon counts';
is_deeply [ split_component('A:') ],          [ 'A',      '' ],      'an empty name';
is_deeply [ split_component(':b') ],          [ '',       'b' ],     'an empty type';
is_deeply [ split_component('') ],            [ '',       undef ],   'nothing';

is name_at('/FLOW/DOMAIN:Duct'), 'Duct', 'the name of an object';
is name_at('/FLOW'),             'FLOW', 'the name of a singleton';
is name_at('/FLOW/Kind'),        'Kind', 'the name of a parameter';
is name_at('/FLOW/DOMAIN:'),     '',     'an empty name is one';

done_testing;
