# Values: texts, integers, logicals, lists, and the kinds of scalars and arrays
# that Perl code may hand over to be filled.
use strict;
use warnings;

use Test::More;

use VEL::Parser::Lite;

my @warnings;
local $SIG{__WARN__} = sub { push @warnings, @_ };

my $data = VEL::Parser::Lite::NEW();
is $data->loadVELData([
        'FLOW:',         'Text = some text',  'Number = 2.5', 'Minus = -2.5',
        'Yes = Yes sir', 'No = off',          'Maybe = maybe', 'List = Cartesian, (1, 2), 3',
        'Numbers = 1.7, -1.7, -2.5, x', 'Logicals = Yes, off, 1', 'Mixed = Yes, perhaps',
        'Empty =', 'END' ]), undef, 'data';

sub value {
    my ($method, $path) = @_;
    my $value = 'untouched';
    my $message = $data->$method($path, \$value);
    return defined $message ? "$message ($value)" : $value;
}

sub list {
    my ($method, $path) = @_;
    my @list = ('before', undef);
    my $message = $data->$method($path, \@list);
    return join '|', $message // (), @list;
}

is value(getStringValue => '/FLOW/Text'), 'some text', 'a text';
is value(getStringValue => '/FLOW/Empty'), '', 'the empty text';
is value(getStringValue => '/FLOW'), undef, 'no text for an object';
is value(getStringValue => 'X'), 'getStringValue: value "/X" does not exist (untouched)', 'unknown';

is value(getIntegerValue => '/FLOW/Number'), 3, 'rounded';
is value(getIntegerValue => '/FLOW/Minus'), -3, 'away from zero';
is value(getIntegerValue => '/FLOW/Text'), 0, 'no number';
is value(getIntegerValue => '/X'), 'getIntegerValue: unable to find value (untouched)', 'unknown';

is value(getLogicalValue => '/FLOW/Yes'), -1, 'yes';
is value(getLogicalValue => '/FLOW/No'), 0, 'no';
is value(getLogicalValue => '/FLOW/Number'), 3, 'a number';
is value(getLogicalValue => '/FLOW/Maybe'),
    "isLogicalValue: value is not a logical: maybe\n (untouched)", 'neither';
is value(getLogicalValue => '/FLOW/Empty'), "isLogicalValue: value is whitespace only\n (untouched)",
    'nothing';
is value(getLogicalValue => '/X'), 'getLogicalValue: unable to find value (untouched)', 'unknown';

is list(getStringList => '/FLOW/List'), 'Cartesian|(1, 2)|3', 'texts';
is list(getStringList => '/FLOW/Empty'), '', 'one empty text';
is list(getStringList => '/X'), 'getStringList: unable to find value', 'unknown, and emptied';
is list(getIntegerList => '/FLOW/Numbers'), '2|-1|-2|0', 'integers';
is list(getIntegerList => '/X'), 'getStringList: unable to find value', 'unknown, and emptied';
is list(getLogicalList => '/FLOW/Logicals'), '-1|0|1', 'logicals';
is list(getLogicalList => '/FLOW/Mixed'),
    "splitLogicalString: not all entries were logicals:\n"
    . "isLogicalValue: value is not a logical: perhaps\n", 'not all of them, and emptied';
is list(getLogicalList => '/X'), 'getStringList: unable to find value', 'unknown, and emptied';

is $data->setStringValue('/FLOW/Text', 'new'), undef, 'set';
is value(getStringValue => '/FLOW/Text'), 'new', '... and got';
is $data->setStringValue('/FLOW/Text', undef), undef, 'set to undef';
is value(getStringValue => '/FLOW/Text'), '', '... is the empty text';
is $data->setStringValue('/FLOW/Text', 1.5), undef, 'set to a number';
is value(getStringValue => '/FLOW/Text'), '1.5', '... is its text';
is $data->setStringValue('/X', 1), 'setStringValue: requested object does not exist', 'unknown';
is $data->setStringValue('/FLOW', 1), 'setStringValue: requested object is not a parameter',
    'an object';

# Bytes and characters.
$data->setStringValue('/FLOW/Text', "\xe4\xff");
is value(getStringValue => '/FLOW/Text'), "\xe4\xff", 'bytes';
my $upgraded = "\xe4\xff";
utf8::upgrade($upgraded);
$data->setStringValue('/FLOW/Text', $upgraded);
is value(getStringValue => '/FLOW/Text'), "\xe4\xff", 'in either form in which Perl stores them';
$data->setStringValue('/FLOW/Text', "\xe4\x{20ac}");
is value(getStringValue => '/FLOW/Text'), "\xc3\xa4\xe2\x82\xac", 'wide characters as UTF-8';
ok !utf8::is_utf8(value(getStringValue => '/FLOW/Text')), '... which are bytes';
my $wide = "\x{20ac}";
$data->getStringValue('/FLOW/Number', \$wide);
$wide .= "\xe4";
is $wide, "2.5\xe4", 'a scalar that had wide characters has bytes now';
$data->setStringValue('/FLOW/Text', "up to\0here");
is value(getStringValue => '/FLOW/Text'), 'up to', 'a text ends at NUL';
my $long = 'x' x 1_000_000;
$data->setStringValue('/FLOW/Text', $long);
ok value(getStringValue => '/FLOW/Text') eq $long, 'a long text';
$data->setStringValue('/FLOW/Text', 'short');

# What may be passed.
{
    package Tied;
    sub TIESCALAR { my ($class, $value) = @_; return bless { value => $value }, $class }
    sub FETCH { return $_[0]{value} }
    sub STORE { my ($self, $value) = @_; die "no more\n" if $self->{full}; push @{ $self->{stored} }, $value; return }
    sub TIEARRAY { my ($class) = @_; return bless { list => [] }, $class }
    sub CLEAR { my ($self) = @_; die "not cleared\n" if $self->{full}; $self->{list} = []; return }
    sub PUSH { my $self = shift; push @{ $self->{list} }, @_; return }
    sub EXTEND { return }
    sub FETCHSIZE { return scalar @{ $_[0]{list} } }
    package Texted;
    use overload '""' => sub { die "no text\n" if $_[0]{fails}; return "/FLOW/$_[0]{name}" };
}
tie my $path, 'Tied', '/FLOW/Text';
my $stored = tie my $target, 'Tied';
is $data->getStringValue($path, \$target), undef, 'tied scalars';
is_deeply $stored->{stored}, ['short'], '... are set once';
$data->getIntegerValue('/FLOW/Number', \$target);
is $stored->{stored}[1], 3, '... also to an integer';
$stored->{full} = 1;
is eval { $data->getStringValue($path, \$target); 1 }, undef, '... and may die';
is $@, "no more\n", '... with their error';
my $array = tie my @target, 'Tied';
is $data->getStringList('/FLOW/List', \@target), undef, 'a tied array';
is_deeply $array->{list}, [ 'Cartesian', '(1, 2)', '3' ], '... is filled';
$array->{full} = 1;
is eval { $data->getStringList('/FLOW/List', \@target); 1 }, undef, '... and may die';
is $@, "not cleared\n", '... with its error';
is value(getStringValue => bless { name => 'Text' }, 'Texted'), 'short', 'an object for a path';
is eval { value(getStringValue => bless { fails => 1 }, 'Texted'); 1 }, undef, '... which may die';
is $@, "no text\n", '... with its error';

is eval { $data->getStringValue('/FLOW/Text', \'constant'); 1 }, undef, 'a constant';
like $@, qr/^Modification of a read-only value attempted/, '... is not changed';
my @list = ('/FLOW/List');
is $data->getStringList($list[0], \@list), undef, 'the path in the array that is filled';
is "@list", 'Cartesian (1, 2) 3', '... is read first';
my $same = '/FLOW/Text';
is $data->getStringValue($same, \$same), undef, 'the path in the scalar that is set';
is $same, 'short', '... is read first';
my %hash;
is $data->getStringValue('/FLOW/Text', \$hash{value}), undef, 'an element of a hash';
is $hash{value}, 'short', '... is set';
my $substring = 'abc';
is $data->getStringValue('/FLOW/Text', \substr $substring, 1, 1), undef, 'a part of a text';
is $substring, 'ashortc', '... is replaced';

is "@warnings", '', 'no warnings';

done_testing;
