# Children, groups, and searches.
use strict;
use warnings;

use Test::More;

use VEL::Parser::Lite;

my $data = VEL::Parser::Lite::NEW();
is $data->loadVELData([
        'FLOW:', 'BOUNDARY: in', 'BOUNDARY: sub', 'END', 'END', 'BOUNDARY: out', 'END',
        'Option = x', 'SOLVER:', 'END', 'END' ]), undef, 'data';
is $data->loadLibraryData([ 'RULES:', 'BOUNDARY: in', 'END', 'END' ]), undef, 'library data';

sub list {
    my ($method, $what) = @_;
    my @list = ('before');
    my $message = $data->$method($what, \@list);
    return join '|', $message // (), @list;
}

is list(getChildObjectList => '/FLOW'), 'BOUNDARY:in|BOUNDARY:out|SOLVER', 'objects';
is list(getChildParamList => '/FLOW'), 'Option', 'parameters';
is list(getChildObjectList => '/FLOW/SOLVER'), '', 'none';
is list(getChildParamList => '/X'), 'getChildObjectList: path "/X" does not exist', 'unknown';
is list(getChildObjectList => '/X'), 'getChildObjectList: path "/X" does not exist', 'unknown';

is list(getObjectsByType => 'BOUNDARY'),
    '/FLOW/BOUNDARY:in|/FLOW/BOUNDARY:in/BOUNDARY:sub|/FLOW/BOUNDARY:out|/RULES/BOUNDARY:in',
    'by type, parents first, library data too';
is list(getObjectsByName => 'in'), '/FLOW/BOUNDARY:in|/RULES/BOUNDARY:in', 'by name';
is list(getObjectsByName => 'SOLVER'), '/FLOW/SOLVER', 'a singleton by its type';
is list(getObjectsByType => 'X'), '', 'none';
is list(getObjectsByType => '/'), '', 'the root is none of them';
is list(getObjectsByName => ''), '', 'no name';

# Searches begin at the root, wherever the current path is.
$data->pushPath('/FLOW/SOLVER');
is list(getObjectsByType => 'SOLVER'), '/FLOW/SOLVER', 'from the root';
$data->popPath;

my (@children, @groups) = ();
@children = @groups = ('before');
is $data->getChildList('/FLOW', \@children, \@groups), undef, 'both lists';
is_deeply \@children, [
    { name => 'in',     className => 'Object',    type => 'BOUNDARY' },
    { name => 'out',    className => 'Object',    type => 'BOUNDARY' },
    { name => 'Option', className => 'Param',     type => 'String' },
    { name => 'SOLVER', className => 'Singleton', type => 'SOLVER' },
], 'children in stored order';
is_deeply \@groups, [
    { className => 'Singleton', type => 'SOLVER',   indices => [3],      count => 1 },
    { className => 'Parameter', type => 'String',   indices => [2],      count => 1 },
    { className => 'Object',    type => 'BOUNDARY', indices => [ 1, 0 ], count => 2 },
], 'groups, the last first';

@children = ('before');
is $data->getChildList('/FLOW', \@children, undef), undef, 'children only';
is scalar @children, 4, '... four';
is $data->getChildList('/FLOW', undef, \@groups), undef, 'groups only';
is scalar @groups, 3, '... three';
is $data->getChildList('/FLOW', undef, undef), undef, 'neither';
is $data->getChildList('/FLOW/SOLVER', \@children, \@groups), undef, 'no children';
is "@children@groups", '', '... two empty lists';
@children = @groups = ('before');
is $data->getChildList('/X', \@children, \@groups),
    'getChildList: unable to find the requested path', 'unknown';
is "@children@groups", '', '... and both emptied';

done_testing;
