# Paths, nodes, validity, the current path.
use strict;
use warnings;

use Test::More;

use VEL::Parser::Lite;

my $data = VEL::Parser::Lite::NEW();

# Making and deleting.
is $data->havePath('/'), 0, 'a new database is empty';
is $data->createObject('/FLOW', 0), undef, 'a singleton';
is $data->createObject('/FLOW/DOMAIN: Duct ', 0), undef, 'an object';
is $data->createObject('/X/DOMAIN:Duct', 0), 'velCreateObject: parent object does not exist',
    'no parent';
is $data->createObject('/FLOW:FLOW', 0),
    'velCreateObject: TYPE:TYPE form for singletons is not permitted', 'type for name';
is $data->createObject('/RULES', 1), undef, 'library data';
is $data->createParam('/FLOW/DOMAIN:Duct/Location', 'B1'), undef, 'a parameter';
is $data->createParam('/FLOW/1st', 'x'),
    q{invalid parameter name "1st": leading character must be alphabetic or '_'}, 'a wrong name';
is $data->createParam('/FLOW/A', "b\rc"),
    "invalid parameter value \"b\rc\": control character number 13 is not allowed.",
    'a wrong value';
is $data->createParam('/FLOW/Nothing', undef), undef, 'no value';
$data->getStringValue('/FLOW/Nothing', \my $nothing);
is $nothing, '', '... is the empty value';

# Asking.
is $data->havePath('/FLOW/DOMAIN:Duct'), 1, 'an object is there';
is $data->havePath('/FLOW/DOMAIN:Pipe'), 0, '... another is not';
is $data->isObject('/FLOW/DOMAIN:Duct'), 1, 'an object';
is $data->isObject('/FLOW/DOMAIN:Duct/Location'), 0, 'a parameter';
is $data->isObject('/X'), 0, 'nothing';
is $data->isLibrary('/RULES'), 1, 'library data';
is $data->isLibrary('/FLOW'), 0, 'user data';
is $data->isLibrary('/X'), -1, 'nothing at all';

# Validity.
is $data->isValid('/X'), -1, 'unknown path';
is $data->isValid('/FLOW'), 0, 'not valid at first';
is $data->setValid('/FLOW', 1), undef, 'marked';
is $data->isValid('/FLOW'), 1, '... itself';
is $data->setValid('/FLOW', 2), undef, 'marked';
is $data->isValid('/FLOW'), 3, '... and below';
is $data->setValid('/FLOW', 0), undef, 'the mark is removed';
is $data->isValid('/FLOW'), 2, '... from itself only';
is $data->setValid('/X', 1), 'setValid: path not found', 'unknown path';
is $data->setValidEx('/X', 1, 1), 'setValid: path not found', 'unknown path';
my $location = '/FLOW/DOMAIN:Duct/Location';
$data->setValid($_, 1) for '/FLOW/DOMAIN:Duct', $location;
$data->setValid($_, 2) for '/', '/FLOW', '/FLOW/DOMAIN:Duct';
is $data->setValidEx($location, 0, 0), undef, 'not propagated';
is $data->isValid('/FLOW/DOMAIN:Duct'), 3, '... its owner stays valid';
is $data->setValidEx($location, 0, 1), undef, 'propagated';
is $data->isValid('/FLOW/DOMAIN:Duct'), 2, '... its owner is not valid any more';
is $data->isValid('/FLOW'), 0, '... and no ancestor is valid with everything below it';

is $data->getValidationLevel, 0, 'validation level';
is $data->setValidationLevel(2), undef, '... is set';
is $data->getValidationLevel, 2, '... and kept';
$data->setValidationLevel(1e15);
is $data->getValidationLevel, 2147483647, '... within 32 bits';
$data->setValidationLevel(-1e15);
is $data->getValidationLevel, -2147483648, '... on both sides';

# The current path.
is $data->getCurrentPath, '/', 'at first';
is $data->pushPath('/FLOW'), undef, 'pushed';
is $data->pushPath('DOMAIN:Duct'), undef, 'relative';
is $data->getCurrentPath, '/FLOW/DOMAIN:Duct', 'the current path';
is $data->havePath('Location'), 1, '... is where relative paths begin';
is $data->changePath('..'), undef, 'changed';
is $data->getCurrentPath, '/FLOW', '... to the parent';
is $data->popPath, undef, 'popped';
is $data->getCurrentPath, '/FLOW', '... to the one below';
is $data->popPath, undef, 'popped' for 1 .. 3;
is $data->getCurrentPath, '/', '... down to the root';
is $data->pushPath('/X'), 'pushPath: path is not found', 'unknown';
is $data->changePath('/X'), 'changePath: path is not found', 'unknown';
my @kept = ($data->getCurrentPath, VEL::Parser::Lite::cleanPath('/x'));
$data->pushPath('/FLOW');
is "@kept", '/ /x', 'results stay as they were given';
$data->popPath;

# Normal form: a function.
is VEL::Parser::Lite::cleanPath('/FLOW / DOMAIN : Fluid  Domain//Option'),
    '/FLOW/DOMAIN:Fluid Domain/Option', 'normal form';
is VEL::Parser::Lite::cleanPath('/SOLVER:SOLVER'), '/SOLVER', '... of a singleton';
is VEL::Parser::Lite::cleanPath('a/../b'), 'a/../b', '... without resolving';
is VEL::Parser::Lite::cleanPath(undef), '', '... of nothing';
is VEL::Parser::Lite::cleanPath('/' . 'x' x 100_000), '/' . 'x' x 100_000, '... of any length';

# Flags are numbers, whatever Perl takes for true.
{
    no warnings 'numeric';
    my $flags = VEL::Parser::Lite::NEW();
    for my $no (0, '0.0', '00', '0 but true', 'yes', '', undef, 0.0, '0E0') {
        my $shown = defined $no ? "'$no'" : 'undef';
        $flags->deleteObj('/');
        is $flags->createObject('/L', $no), undef, "made with $shown";
        is $flags->isLibrary('/L'), 0, '... as user data';
        is $flags->loadVELLine("$_", $no), undef, '... a line' for 'M:', 'x = 1', 'END';
        is $flags->isLibrary('/M'), 0, '... as well';
        $flags->setValid($_, 1) for '/M', '/M/x';
        is $flags->setValidEx('/M/x', 0, $no), undef, '... invalidated';
        is $flags->isValid('/M'), 1, '... but not the nodes above';
        $flags->createObject('/N', 1);
        $flags->getObjectVEL('/', \my @lines, $no);
        is "@lines", 'L: END M:   x = 1 END', '... written without library data';
    }
    for my $yes (1, -1, '2.0', 2**40) {
        $flags->deleteObj('/');
        $flags->createObject('/L', $yes);
        is $flags->isLibrary('/L'), 1, "library data with $yes";
    }
}

# Deleting.
is $data->deleteParam($location), undef, 'a parameter';
is $data->deleteParam($location), 'deleteParamH: unable to find parameter', '... is deleted';
is $data->deleteObj('/FLOW'), undef, 'an object with all below';
is $data->havePath('/FLOW/DOMAIN:Duct'), 0, '... is deleted';
is $data->deleteObj('/FLOW'), 'deleteObjH: unable to find parameter', '... with everything in it';
is $data->deleteObj('/'), undef, 'everything';
is $data->havePath('/'), 1, '... except the root';

done_testing;
