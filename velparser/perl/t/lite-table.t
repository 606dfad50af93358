# Every method: its name, its usage, its documentation, and a test that uses it.
use strict;
use warnings;

use B;
use File::Basename 'dirname';
use Test::More;

use VEL::Parser::Lite;

my %usage = (
    NEW                   => '',
    DESTROY               => 'self',
    isSameDatabase        => 'self, other',
    getObjectVEL          => 'self, path, array, includeLibrary',
    getTreeText           => 'self, path',
    getFormattedVEL       => 'self, path, lineLength, array',
    getChildObjectList    => 'self, path, array',
    getChildParamList     => 'self, path, array',
    getObjectsByName      => 'self, name, array',
    getObjectsByType      => 'self, type, array',
    isLibrary             => 'self, path',
    isValid               => 'self, path',
    setValid              => 'self, path, valid',
    setValidEx            => 'self, path, valid, propagate',
    getValidationLevel    => 'self',
    setValidationLevel    => 'self, value',
    isObject              => 'self, path',
    havePath              => 'self, path',
    registerActionHandler => 'self, handler',
    invokeAction          => 'self, action, args',
    createObject          => 'self, path, isLibrary',
    createParam           => 'self, path, value',
    deleteObj             => 'self, path',
    deleteParam           => 'self, path',
    getStringValue        => 'self, path, value',
    setStringValue        => 'self, path, value',
    getStringList         => 'self, path, array',
    getIntegerValue       => 'self, path, value',
    getIntegerList        => 'self, path, array',
    getLogicalValue       => 'self, path, value',
    getLogicalList        => 'self, path, array',
    getCurrentPath        => 'self',
    popPath               => 'self',
    pushPath              => 'self, path',
    changePath            => 'self, path',
    loadVELLine           => 'self, line, isLibrary',
    getVELState           => 'self',
    setVELState           => 'self, level',
    loadVELData           => 'self, data',
    loadLibraryData       => 'self, data',
    loadVELFile           => 'self, file',
    readLibraries         => 'self',
    readNamedLibraries    => 'self, libList, defDir',
    getChildList          => 'self, path, childInfo, groupInfo',
    addChangeHandler      => 'self, rsub',
    clearChangeHandlers   => 'self',
    cleanPath             => 'path',
);

sub slurp {
    my ($file) = @_;
    open my $handle, '<', $file or die "$file: $!";
    local $/ = undef;
    return scalar readline $handle;
}

sub count_arguments { return scalar(() = $_[0] =~ /\w+/g) }

sub died {
    my ($code) = @_;
    return eval { $code->(); 1 } ? 'lived' : $@ =~ s/ at \S+ line \d+\.\n\z//r;
}

sub compiled_names {
    no strict 'refs';    ## no critic (ProhibitNoStrict)
    return grep { defined &{"VEL::Parser::Lite::$_"}
            && B::svref_2object(\&{"VEL::Parser::Lite::$_"})->XSUB } keys %VEL::Parser::Lite::;
}

is_deeply [sort grep { !/^(?:bootstrap|dl_load_flags|CLONE)$/ } compiled_names()], [sort keys %usage],
    'the compiled methods are these and no others';

my $data = VEL::Parser::Lite::NEW();
for my $name (sort keys %usage) {
    my $method = VEL::Parser::Lite->can($name);
    my $count = count_arguments($usage{$name});
    my @arguments = ($data, (1) x 10);
    for my $wrong (grep { $_ >= 0 && $_ != $count } 0, $count - 1, $count + 1, 11) {
        is died(sub { $method->(@arguments[0 .. $wrong - 1]) }),
            "Usage: VEL::Parser::Lite::$name($usage{$name})", "$name with $wrong arguments";
    }
}

for my $name (sort grep { $usage{$_} =~ /^self/ } keys %usage) {
    my $method = VEL::Parser::Lite->can($name);
    my @rest = (1) x (count_arguments($usage{$name}) - 1);
    for my $self (undef, 'VEL::Parser::Lite', 1, \1, {}, bless({}, 'Other'),
        bless([], 'Other'))
    {
        is died(sub { $method->($self, @rest) }), 'self is not of type VEL::Parser::Lite',
            "$name of " . (defined $self ? $self : 'undef');
    }
}

for my $name (sort keys %usage) {
    my @words = $usage{$name} =~ /\w+/g;
    for my $position (grep { $words[$_] =~ /^(?:array|data|childInfo|groupInfo|args)$/ } 0 .. $#words) {
        my $method = VEL::Parser::Lite->can($name);
        for my $wrong ('text', {}, \my $scalar, sub { 1 }) {
            my @arguments = ($data, (1) x $#words);
            $arguments[$_] = [] for grep { $words[$_] =~ /^(?:childInfo|groupInfo)$/ } 0 .. $#words;
            $arguments[$position] = $wrong;
            is died(sub { $method->(@arguments) }),
                "$words[$position] is not an array reference", "$name with $wrong for an array";
        }
    }
    next if $name !~ /^get(?:String|Integer|Logical)Value$/;
    for my $wrong ('text', undef, 1, [], {}, sub { 1 }, \*STDOUT, qr/x/) {
        is died(sub { $data->$name('/', $wrong) }),
            "VEL::Parser::Lite::$name: value is not a reference",
            "$name with " . (defined $wrong ? $wrong : 'undef') . ' for a scalar';
    }
}

# Any argument in the place of a text or a number is taken as one.
{
    my %odd = (
        undef         => undef,
        'a wide text' => "/\x{20ac}",
        'a NUL'       => "/FLOW\0/A",
        'a long text' => '/x' x 50_000,
        'an array'    => [],
        'a glob'      => \*STDOUT,
        'a pattern'   => qr/x/,
        'a huge one'  => 1e300,
        'no number'   => 'nan',
    );
    my $is_output = qr/^(?:self|array|data|value|childInfo|groupInfo|args)$/;
    my @warnings;
    local $SIG{__WARN__} = sub { push @warnings, $_[0] if $_[0] !~ /isn't numeric in subroutine entry/ };
    for my $name (sort grep { !/^(?:NEW|DESTROY)$/ } keys %usage) {
        my @words = $usage{$name} =~ /\w+/g;
        my $gives_value = $name =~ /^get(?:String|Integer|Logical)Value$/;
        my @positions = grep { $words[$_] !~ $is_output || ($words[$_] eq 'value' && !$gives_value) } 0 .. $#words;
        for my $position (@positions) {
            for my $kind (sort keys %odd) {
                my $object = VEL::Parser::Lite::NEW();
                $object->loadVELData([ 'FLOW:', 'A = 1', 'END' ]);
                my @arguments = map {
                    $_ eq 'self' ? $object
                        : $_ eq 'value' && $gives_value ? \my $value
                        : /^(?:array|data|childInfo|groupInfo|args)$/ ? []
                        : '/FLOW/A'
                } @words;
                $arguments[$position] = $odd{$kind};
                is died(sub { VEL::Parser::Lite->can($name)->(@arguments) }), 'lived',
                    "$name with $kind for $words[$position]";
                is $object->havePath('/FLOW/A'), 1, '... and the object is whole'
                    if $name !~ /^(?:change|push)Path|^delete/;
            }
        }
    }
    is "@warnings", '', 'without warnings';
}

my $pod = slurp($INC{'VEL/Parser/Lite.pm'});
my %documented;
while ($pod =~ /^=item C<< (\$data->|VEL::Parser::Lite::)(\w+)\((.*)\) >>$/mg) {
    my ($self, $name, $arguments) = ($1, $2, $3);
    $documented{$name} = ($self eq '$data->') + ($arguments =~ tr/$//);
}
is_deeply \%documented, { map { $_ => count_arguments($usage{$_}) } keys %usage },
    'every method is documented with its arguments, and nothing else is';

my $tests = join '', map { slurp($_) } grep { !/lite-table/ } glob dirname(__FILE__) . '/lite-*.t';
for my $name (sort keys %usage) {
    ok $tests =~ /(?:->|::|\()\Q$name\E\b/, "$name is used in a test";
}

done_testing;
