# Perl code that runs in the middle of a method: while it reads its arguments,
# while what an array held before goes, and handlers without end. Whatever such
# code does, the method finishes with what it was given.
use strict;
use warnings;

use Test::More;

use VEL::Parser::Lite;

my @warnings;
local $SIG{__WARN__} = sub { push @warnings, @_ };

my $in_use = 'DESTROY: the object is in use';

# An argument that runs code when it is read, in whatever form.
{
    package Code;
    use overload map({ $_ => sub { return $_[0][0]->() } } '""', '0+', 'bool'), fallback => 1;
    sub new { my ($class, $code) = @_; return bless [$code], $class }
    package Fetch;
    sub TIESCALAR { my ($class, $code) = @_; return bless [$code], $class }
    sub FETCH { return $_[0][0]->() }
    sub STORE { return }
    package Leaving;
    sub new { my ($class, $code) = @_; return bless [$code], $class }
    sub DESTROY { return $_[0][0]->() }
    package Counted;
    our @ISA = 'VEL::Parser::Lite';
    my $gone = 0;
    sub DESTROY { my $self = shift; $gone++; return $self->SUPER::DESTROY }
    sub gone { my $number = $gone; $gone = 0; return $number }
}

sub code { my ($code) = @_; return Code->new($code) }

sub died {
    my ($code) = @_;
    return eval { $code->(); 1 } ? 'lived' : $@ =~ s/ at \S+ line \d+\.\n\z//r;
}

# Texts that share their memory with no constant.
sub fresh { my ($text) = @_; return join '', split //, $text }

sub loaded {
    my $data = bless VEL::Parser::Lite::NEW(), 'Counted';
    $data->loadVELData([ 'FLOW:', 'A = 1', 'B = 2', 'END' ]);
    return $data;
}

sub value {
    my ($data, $path) = @_;
    $data->getStringValue($path, \my $value);
    return $value;
}

# An argument whose code ends the object. Each method learns of it in its own way
# of reading that argument.
my %call = (
    getStringValue     => sub { [ $_[0], \my $value ] },
    getStringList      => sub { [ $_[0], [] ] },
    getFormattedVEL    => sub { [ '/FLOW', $_[0], [] ] },
    getObjectVEL       => sub { [ '/FLOW', [], $_[0] ] },
    setValid           => sub { [ '/FLOW', $_[0] ] },
    setValidEx         => sub { [ '/FLOW', 1, $_[0] ] },
    setValidationLevel => sub { [ $_[0] ] },
    setStringValue     => sub { [ '/FLOW/A', $_[0] ] },
    createParam        => sub { [ '/FLOW/C', $_[0] ] },
    createObject       => sub { [ '/FLOW/SUB', $_[0] ] },
    loadVELLine        => sub { [ 'C = 3', $_[0] ] },
    setVELState        => sub { [ $_[0] ] },
    loadVELData        => sub { [ [ 'C = 3', $_[0] ] ] },
    loadLibraryData    => sub { [ [ 'C = 3', $_[0] ] ] },
    pushPath           => sub { [ $_[0] ] },
    isValid            => sub { [ $_[0] ] },
);
my %text = (getStringValue => '/FLOW/A', getStringList => '/FLOW/A', pushPath => '/FLOW',
    loadVELData => 'D = 4', loadLibraryData => 'D = 4', isValid => '/FLOW');
for my $method (sort keys %call) {
    my $answer = $text{$method} // 1;
    {
        my $data = loaded();
        my $answered;
        my $ending = code(sub { $answered = $data->DESTROY; return $answer });
        is died(sub { $data->$method(@{ $call{$method}->($ending) }) }), 'lived', "$method: ended";
        is $answered, $in_use, '... is refused during the method';
        is $data->havePath('/FLOW/A'), 1, '... and the object stays';
        Counted::gone();
        is $data->DESTROY, undef, '... until the method has ended';
    }
    Counted::gone();
    {
        my $data = loaded();
        my $left;
        my $dropping = code(sub { undef $data; $left = Counted::gone(); return $answer });
        is died(sub { $data->$method(@{ $call{$method}->($dropping) }) }), 'lived',
            "$method: the last reference goes";
        is $left . Counted::gone(), '01', '... and the object too, after the method has ended';
    }
}

# Arguments that change each other.
{
    my $data = loaded();
    my $line = fresh('Line = ' . 'x' x 100);
    is $data->loadVELLine($line, code(sub { undef $line; my @reused = map { 'y' x 107 } 1 .. 9; 0 })),
        undef, 'a flag that clears the line';
    is value($data, '/Line'), 'x' x 100, '... too late';

    my $path = fresh('/FLOW/Longer name');
    is $data->createParam($path, code(sub { undef $path; my @reused = map { 'y' x 17 } 1 .. 9; 7 })),
        undef, 'a value that clears the path';
    is value($data, '/FLOW/Longer name'), 7, '... too late';

    my $times = 0;
    tie my $both, 'Fetch', sub { return $times++ ? fresh('v' x 1000) : fresh('/FLOW/Twice') };
    is $data->createParam($both, $both), undef, 'one tied scalar for two arguments';
    is value($data, '/FLOW/Twice'), 'v' x 1000, '... which gives two texts';

    my %held = (path => fresh('/FLOW/A'), value => code(sub { return 'never' }));
    is $data->createParam(code(sub { %held = (); return '/FLOW/A' }), $held{value}), undef,
        'an argument that takes the next one away';
    is value($data, '/FLOW/A'), 'never', '... too late';

    my ($name, $text) = (fresh('/FLOW/Watched'), fresh('t' x 50));
    my $adding = code(sub {
            $data->addChangeHandler(sub { $name = 'z' x 5000; undef $text; return });
            return fresh('w' x 50);
    });
    is $data->createParam($name, $adding), undef, 'a value that adds a handler';
    is value($data, '/FLOW/Watched'), 'w' x 50, '... which is called from the next change on';
    $data->clearChangeHandlers;

    is $data->setStringValue('/FLOW/A', code(sub { return code(sub { return 'inner' }) })), undef,
        'an object whose text is an object';
    is value($data, '/FLOW/A'), 'inner', '... with a text';
    'some /FLOW/B text' =~ m{(/\S+)};
    is $data->setStringValue($1, $1), undef, 'a part of a matched text';
    is value($data, '/FLOW/B'), '/FLOW/B', '... is a text like any other';
}

# Arguments that die.
for my $method (sort keys %call) {
    my $data = loaded();
    my $dying = code(sub { die "not read\n" });
    is died(sub { $data->$method(@{ $call{$method}->($dying) }) }), "not read\n", "$method: dies";
    Counted::gone();
    undef $data;
    is Counted::gone(), 1, '... and keeps nothing alive';
}

# Arrays of lines whose elements change the array.
{
    my $data = loaded();
    my @lines = (fresh('P = first'), undef, fresh('Q = third'));
    tie $lines[1], 'Fetch', sub {
        push @lines, ('R = more') x 1000;
        $lines[0] = 'P = too late';
        return fresh('T = tied');
    };
    is $data->loadVELData(\@lines), undef, 'an element that adds to the array';
    is join('|', map { value($data, "/$_") // '' } qw(P T Q R)), 'first|tied|third|',
        '... changes nothing of what is parsed';

    @lines = (fresh('P = 1'), code(sub { @lines = (); return fresh('Q = 2') }), fresh('R = 3'));
    is died(sub { $data->loadVELData(\@lines) }), 'Undefined element in array or fetch error',
        'an element that empties the array';
    my $reference;
    $reference = [ fresh('V = 1'), code(sub { undef $reference; return fresh('W = 2') }) ];
    is $data->loadVELData($reference), undef, 'an element that drops the array';
    is value($data, '/V') . value($data, '/W'), 12, '... too late';

    my @given;
    $data->registerActionHandler(sub { @given = @_; return 1 });
    my @words;
    @words = (fresh('first'), code(sub { $words[0] = 'x' x 500; return $data->DESTROY }), 5);
    my $action = fresh('an action');
    is $data->invokeAction($action, \@words), undef, 'a word that changes the others';
    is join('|', @given), "an action|first|$in_use|5", '... too late';
    is $words[2], 5, 'a number';
    is died(sub { $data->invokeAction('x', [ code(sub { die "no word\n" }) ]) }), "no word\n",
        'a word that dies';
}

# Arrays that are filled: what they held before goes.
{
    my $data = loaded();
    my $array;
    my $fills = 0;
    $array = [ Leaving->new(sub { undef $array; $fills++ }) ];
    is $data->getChildParamList('/FLOW', $array), undef, 'an element that drops the array';
    is "$fills", 1, '... is freed once';

    my $long = join '', map { "/X$_" } 1 .. 50;
    my @left = (Leaving->new(sub { $data->getChildParamList('/Y' x 20, []) }));
    is $data->getChildParamList($long, \@left), qq{getChildObjectList: path "$long" does not exist},
        'an element that fails after the method has';

    my ($children, $groups);
    $children = [ Leaving->new(sub { undef $groups; undef $children }) ];
    $groups   = [ Leaving->new(sub { die "not heard\n" }) ];
    is $data->getChildList('/FLOW', $children, $groups), undef, 'elements that drop both arrays';
    my $same = [];
    is $data->getChildList('/FLOW', $same, $same), undef, 'one array for both lists';
    is join(' ', map { $_->{className} } @$same), 'Parameter', '... has the second list';

    my $scalar;
    $scalar = \do { my $value = Leaving->new(sub { undef $scalar }) };
    is $data->getStringValue('/FLOW/A', $scalar), undef, 'a value that drops the scalar';
    my @constant = (1);
    Internals::SvREADONLY(@constant, 1);
    like died(sub { $data->getStringList('/FLOW/A', \@constant) }),
        qr/^Modification of a read-only value attempted/, 'an array that is constant';
}
like shift @warnings, qr/^\s*\(in cleanup\) not heard/, 'an element that dies in its destructor gives a warning';

# The end of an object whose handlers have something to say about it.
{
    my $data = loaded();
    my $said;
    $data->addChangeHandler(do {
            my $leaving = Leaving->new(sub { $said = died(sub { $data->havePath('/') }) });
            sub { return $leaving }
    });
    is $data->DESTROY, undef, 'handlers that are freed with their object';
    is $said, 'self is not of type VEL::Parser::Lite', '... find the object destroyed';
}

# A handler that is replaced: what it held may end the object.
{
    my $data = loaded();
    my @said;
    $data->registerActionHandler(do {
            my $leaving = Leaving->new(sub { push @said, $data->DESTROY });
            sub { return $leaving }
    });
    is $data->registerActionHandler(sub { 1 }), undef, 'a handler whose destructor destroys the object';
    is scalar(@said), 1, '... once';
    is died(sub { $data->havePath('/') }), 'self is not of type VEL::Parser::Lite',
        '... when the new one is in place';

    $data = loaded();
    $data->registerActionHandler(sub { push @said, 'kept'; return 1 });
    tie my $dying, 'Fetch', sub { die "no handler\n" };
    is died(sub { $data->registerActionHandler($dying) }), "no handler\n", 'one that cannot be read';
    is $data->invokeAction('x', undef), undef, '... replaces nothing';
    is $said[-1], 'kept', '... and the previous handler is called';
}

# Handlers without end.
{
    no warnings 'recursion';
    my $data = loaded();
    my $number = 0;
    $data->addChangeHandler(sub { $data->setStringValue('/FLOW/A', ++$number) });
    is died(sub { $data->setStringValue('/FLOW/A', 'x') }), 'Handlers call each other without end',
        'a handler that changes the value each time';
    is $number, 200, '... is stopped';
    is value($data, '/FLOW/A'), 200, '... and the changes stay';
    $data->clearChangeHandlers;
    is $data->setStringValue('/FLOW/A', 'x'), undef, '... and the object works';

    $data->registerActionHandler(sub { $data->invokeAction(@_[ 0, 1 ]); return 1 });
    is died(sub { $data->invokeAction('again', undef) }), 'args is not an array reference',
        'an action that calls itself wrongly';
    $data->registerActionHandler(sub { $data->invokeAction('again', undef); return 1 });
    is died(sub { $data->invokeAction('again', undef) }), 'Handlers call each other without end',
        'an action that calls itself';
    my $depth = 0;
    $data->registerActionHandler(sub { return ++$depth < 200 ? $data->loadVELLine('> go', 0) : 1 });
    is $data->loadVELLine('> go', 0), undef, 'one that calls itself many times';
    is $depth, 200, '... ends at a limit';
}

# Handlers that are nothing to call.
{
    my $data = loaded();
    for my $wrong (undef, '', 'no_such_function', {}, []) {
        my $shown = defined $wrong ? "'$wrong'" : 'undef';
        $data->addChangeHandler($wrong);
        unlike died(sub { $data->setStringValue('/FLOW/A', $shown) }), qr/^lived/,
            "a change handler that is $shown";
        $data->clearChangeHandlers;
        $data->registerActionHandler($wrong);
        unlike died(sub { $data->invokeAction('x', undef) }), qr/^lived/,
            "an action handler that is $shown";
    }
    is $data->setStringValue('/FLOW/A', 'whole'), undef, 'and the object works';
}

is "@warnings", '', 'no other warnings';

done_testing;
