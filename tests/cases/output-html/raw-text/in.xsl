<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="html" indent="no"/>
<xsl:template match="/"><script>a &lt; b<i>&lt;</i></script><i>&lt;</i></xsl:template>
</xsl:stylesheet>
